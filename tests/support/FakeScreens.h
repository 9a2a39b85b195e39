// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Screens.h"

#include <cstddef>
#include <optional>
#include <vector>

/// Displays that the test sets. One at first, with a bar of 25 points at its top.
class FakeScreens final : public platform::Screens {
public:
    [[nodiscard]] std::vector<platform::Screen> all() const override { return list; }
    [[nodiscard]] std::optional<std::size_t> mainIndex() const override { return main; }
    [[nodiscard]] platform::Point pointer() const override { return mouse; }

    std::vector<platform::Screen> list { { "Main", { 0, 0, 1440, 900 }, { 0, 0, 1440, 875 } } };
    std::optional<std::size_t> main = 0;
    platform::Point mouse { 700, 400 };
};
