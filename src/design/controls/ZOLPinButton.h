// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/controls/ZOLShellButton.h"

#include <functional>

namespace ostrel {

/// Keeps the panel open on a click outside, or lets it go. Active while pinned. Main thread.
class ZOLPinButton final : public ZOLShellButton {
public:
    /// `onChange` gets the new value after a press; it may delete the button.
    ZOLPinButton(bool pinned, std::function<void(bool)> onChange);

    [[nodiscard]] bool pinned() const { return isActive(); }
    /// Without a call of `onChange`.
    void setPinned(bool pinned);
    void setOnChange(std::function<void(bool)> onChange);

private:
    void flip();

    std::function<void(bool)> onChange_;
};

} // namespace ostrel
