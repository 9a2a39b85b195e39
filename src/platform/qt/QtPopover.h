// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Popover.h"
#include "platform/Screens.h"

namespace platform {

/// Popovers as windows of the toolkit. Constructing it asks nobody; making one needs an application object.
class QtPopovers final : public Popovers {
public:
    /// `screens` outlives every popover.
    explicit QtPopovers(const Screens& screens);

    [[nodiscard]] std::unique_ptr<Popover> makePopover(double cornerRadius) override;

private:
    const Screens& screens_;
};

} // namespace platform
