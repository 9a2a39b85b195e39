// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Screens.h"

#include <cstddef>
#include <optional>
#include <vector>

/// Displays that the test places; at first one of 1512 by 982 points with a bar of 24 at its top.
class FakeScreens final : public platform::Screens {
public:
    [[nodiscard]] std::vector<platform::Screen> all() const override { return screens; }
    [[nodiscard]] std::optional<std::size_t> mainIndex() const override { return main; }
    [[nodiscard]] platform::Point pointer() const override { return mouse; }

    std::vector<platform::Screen> screens { { "main", { 0, 0, 1512, 982 }, { 0, 0, 1512, 958 } } };
    std::optional<std::size_t> main = 0;
    platform::Point mouse;
};
