// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/FloatingWindows.h"

namespace platform {

/// Through the window manager's hints.
class QtFloatingWindows final : public FloatingWindows {
public:
    void prepare(QWidget& window, double cornerRadius) override;
    void takeKeyboard(QWidget& window) override;
};

} // namespace platform
