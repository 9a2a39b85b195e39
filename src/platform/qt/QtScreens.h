// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Screens.h"

#include <memory>

namespace platform {

/// The displays as the toolkit knows them, less the room of the desktop's bars as the X display tells it:
/// the toolkit itself knows of bars only where there is one display. Constructing it asks nobody and needs
/// no application object.
class QtScreens final : public Screens {
public:
    QtScreens();
    QtScreens(const QtScreens&) = delete;
    QtScreens& operator=(const QtScreens&) = delete;
    ~QtScreens() override;

    /// In the toolkit's order. What bars keep is read at the first call, and again after they changed.
    [[nodiscard]] std::vector<Screen> all() const override;
    [[nodiscard]] std::optional<std::size_t> mainIndex() const override;
    [[nodiscard]] Point pointer() const override;

private:
    class Bars;

    mutable std::unique_ptr<Bars> bars_;
};

} // namespace platform
