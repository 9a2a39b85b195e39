// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Screens.h"
#include "platform/qt/X11Struts.h"

namespace platform {

/// The displays as the toolkit knows them, less the room of the desktop's bars as the X display tells it:
/// the toolkit itself knows of bars only where there is one display. Constructing it asks nobody and needs
/// no application object.
class QtScreens final : public Screens {
public:
    /// `struts` outlives this.
    explicit QtScreens(X11Struts& struts);

    /// In the toolkit's order.
    [[nodiscard]] std::vector<Screen> all() const override;
    [[nodiscard]] std::optional<std::size_t> mainIndex() const override;
    [[nodiscard]] Point pointer() const override;

private:
    X11Struts& struts_;
};

} // namespace platform
