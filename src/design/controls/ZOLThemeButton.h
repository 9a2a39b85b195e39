// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/ZOLThemePolicy.h"
#include "design/controls/ZOLShellButton.h"

#include <functional>

namespace ostrel {

/// Turns the panel white or black. Main thread.
class ZOLThemeButton final : public ZOLShellButton {
public:
    /// `onChange` gets the new mode after a press; it may delete the button.
    ZOLThemeButton(ZOLThemePolicy::Mode mode, std::function<void(ZOLThemePolicy::Mode)> onChange);

    [[nodiscard]] ZOLThemePolicy::Mode mode() const { return mode_; }
    /// Without a call of `onChange`.
    void setMode(ZOLThemePolicy::Mode mode);
    void setOnChange(std::function<void(ZOLThemePolicy::Mode)> onChange);

private:
    void flip();

    ZOLThemePolicy::Mode mode_;
    std::function<void(ZOLThemePolicy::Mode)> onChange_;
};

} // namespace ostrel
