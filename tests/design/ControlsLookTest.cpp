// SPDX-License-Identifier: Apache-2.0
#include "design/OstrelStyle.h"
#include "design/controls/ButtonLook.h"
#include "design/controls/Chunked.h"

#include <tuple>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using enum ButtonKind;

TEST(ButtonLook, IsTheTableOfKindAndState)
{
    const ButtonState rest;
    const ButtonState hovering { .hovering = true };
    const ButtonState active { .active = true };
    const ButtonState pressed { .active = true, .hovering = true, .pressed = true };
    const ButtonState off { .enabled = false };
    const ButtonState offActive { .enabled = false, .active = true };
    const std::tuple<ButtonKind, ButtonState, const char*> rows[] {
        // fill, outline, bar, text, weight
        { shellFramed, rest, "surface divider - text-secondary 400" },
        { shellFramed, hovering, "hover divider - text 400" },
        { shellFramed, active, "hover divider - text 600" },
        { shellFramed, off, "surface divider - text-disabled 400" },
        { shellNavigation, rest, "- - - text-secondary 400" },
        { shellNavigation, hovering, "hover - - text 400" },
        { shellNavigation, active, "hover - selection text 600" },
        { shellNavigation, pressed, "divider - selection text 600" },
        { shellQuiet, rest, "surface - - text-secondary 400" },
        { shellQuiet, offActive, "hover - - text-disabled 600" },
        { ostrelPlain, rest, "canvas divider - text-secondary 400" },
        { ostrelPlain, active, "hover divider - text 600" },
        { ostrelPlain, off, "canvas divider - text-secondary 400" },
        { ostrelNavigation, rest, "- - - text-secondary 400" },
        { ostrelNavigation, active, "hover - selection text 600" },
        { hintCard, rest, "hint-background hint-border - text-secondary 500" },
        { hintCard, hovering, "hover hint-border - hint-text 500" },
        { hintCard, off, "hint-background hint-border - text-secondary 500" },
    };
    const auto named = [](const std::optional<ThemedColor>& color) { return color ? color->token : "-"; };
    for (auto [kind, state, expected] : rows) {
        for (const bool focused : { false, true }) {
            state.focused = focused;
            const ButtonLook look = buttonLook(kind, state);
            EXPECT_EQ(fmt::format("{} {} {} {} {}", named(look.fill), named(look.outline), named(look.bar),
                          look.text.token, static_cast<int>(look.weight)),
                expected);
            EXPECT_EQ(look.ring.has_value(), focused);
            EXPECT_EQ(look.ringRadius(), 6);
        }
    }
}

TEST(Chunked, GivesConsecutiveSlicesOfWhichTheLastMayBeShorter)
{
    const std::vector<int> items { 1, 2, 3, 4, 5 };
    for (const auto& [size, count, last] :
        { std::tuple { 1U, 5U, 1U }, { 2U, 3U, 1U }, { 5U, 1U, 5U }, { 9U, 1U, 5U }, { 0U, 0U, 0U } }) {
        const auto slices = chunked(items, size);
        ASSERT_EQ(slices.size(), count) << size;
        std::vector<int> all;
        for (const auto& slice : slices)
            all.insert(all.end(), slice.begin(), slice.end());
        EXPECT_EQ(all, size > 0 ? items : std::vector<int>());
        EXPECT_EQ(slices.empty() ? 0 : slices.back().size(), last);
    }
}

} // namespace
