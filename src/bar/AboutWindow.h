// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/ZOLThemePolicy.h"

#include <memory>

class QWidget;

namespace ostrel {

/// The window that tells what the instrument is. Constructing it builds nothing. Main thread.
class AboutWindow {
public:
    AboutWindow();
    AboutWindow(const AboutWindow&) = delete;
    AboutWindow& operator=(const AboutWindow&) = delete;
    ~AboutWindow();

    /// Opens it in the middle of the screen, or brings it forward. It is built once; closing only hides it.
    void show();
    /// Gives it that theme; nothing before it was built, since it is built in the application's.
    void applyTheme(ZOLThemePolicy::Mode mode);

    /// Null before the first `show`.
    [[nodiscard]] QWidget* window() const { return window_.get(); }

private:
    std::unique_ptr<QWidget> window_;
};

} // namespace ostrel
