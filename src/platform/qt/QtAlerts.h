// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Alerts.h"

namespace platform {

/// Questions as dialogs of the toolkit, over the window that has the keyboard, or on the display where the
/// pointer is. Constructing it asks nobody and needs no application object.
class QtAlerts final : public Alerts {
public:
    /// Also `cancelButton` when the program quits meanwhile.
    [[nodiscard]] std::size_t runModal(const Alert& alert) override;
    [[nodiscard]] bool isUp() const override { return up_ > 0; }

private:
    int up_ = 0; ///< one may be asked while another waits
};

} // namespace platform
