// SPDX-License-Identifier: Apache-2.0
#include "panel/SettingsText.h"

#include <chrono>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using platform::Seconds;

/// The buttons in one line: those that are on in brackets, those that can't be pressed in round ones.
template <typename Buttons>
std::string said(const Buttons& buttons)
{
    std::string text;
    for (const SettingsButton& button : buttons) {
        const std::string title = button.active ? fmt::format("[{}]", button.title) : button.title;
        text += button.enabled ? title + " " : fmt::format("({}) ", title);
    }
    return text;
}

TEST(SettingsText, EachModeOfTheBarSaysWhatItShows)
{
    struct Case {
        BarDisplayMode mode;
        std::string parts, carried, preview;
    };
    const BarParts chosen { "swap", "cpu", "unknown" };
    const std::string none = "the parts belong to `mark + value` and `value`; this mode draws no value.";
    for (const auto& [mode, parts, carried, preview] : {
             Case { BarDisplayMode::mark, "([cpu]) (mem) ([swap]) (load) (mcp) ", none,
                 "true 'cpu 3%' menu bar · mark | menu bar preview · mark · the mark alone" },
             { BarDisplayMode::markValue, "[cpu] mem [swap] load mcp ", "the value carries: cpu + swap",
                 "true 'cpu 3%' menu bar · mark + value | menu bar preview · mark + value · the mark and cpu "
                 "3%" },
             { BarDisplayMode::value, "[cpu] mem [swap] load mcp ", "the value carries: cpu + swap",
                 "false 'cpu 3%' menu bar · value | menu bar preview · value · cpu 3%" },
             { BarDisplayMode::hidden, "([cpu]) (mem) ([swap]) (load) (mcp) ", none,
                 "false 'cpu 3%' hidden · no item in the bar | menu bar preview · hidden · no item in the "
                 "bar" },
         }) {
        const BarSettings bar { mode, chosen, " cpu 3% ", "⌥⌘m" };
        EXPECT_EQ(said(SettingsText::barParts(bar)), parts);
        EXPECT_EQ(SettingsText::carried(bar), carried);
        const BarPreview shown = SettingsText::barPreview(bar);
        EXPECT_EQ(
            fmt::format("{} '{}' {} | {}", shown.mark, shown.title, shown.mode, shown.accessibilityLabel),
            preview);
    }
    const BarParts empty;
    EXPECT_EQ(SettingsText::carried({ BarDisplayMode::value, empty, "", "" }), "the value carries: ");
    const auto modes = SettingsText::barModes({ BarDisplayMode::value, empty, "", "none" });
    EXPECT_EQ(said(modes), "mark mark + value [value] hidden ");
    EXPECT_EQ(modes[1].tip, "draw the bar item as mark + value");
    EXPECT_EQ(modes[3].tip, "take the item out of the bar; asks first, none stays the way back");
}

TEST(SettingsText, OfTheProfilesTheOneOfTheIntervalIsOnAndNoneForAForeignOne)
{
    for (const auto& [native, buttons] : { std::pair { 3.0, "[fast] normal calm " },
             { 5.0, "fast [normal] calm " }, { 10.0, "fast normal [calm] " }, { 4.0, "fast normal calm " } })
        EXPECT_EQ(said(SettingsText::refresh(Seconds(native))), buttons);
    EXPECT_EQ(SettingsText::refresh(Seconds(3))[2].tip,
        "native readings every 10s, process details every 30s while open");
    EXPECT_EQ(SettingsText::refreshNote(Seconds(4.9), Seconds(15)),
        "native readings every 4s · process details every 15s while open · server checks run on demand");
}

TEST(SettingsText, OfTheHintsTheLastFiveStandNewestFirstWhateverTheirTimes)
{
    std::vector<CompanionPolicy::Receipt> receipts;
    EXPECT_TRUE(SettingsText::hintHistory(receipts).empty());
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double seconds : { 0.0, 60.0, 1e300, -1e300, nan, 9.1e9 })
        receipts.push_back({ CompanionPolicy::Date(Seconds(seconds)), fmt::format("s{}", receipts.size()) });
    const auto rows = SettingsText::hintHistory(receipts);
    ASSERT_EQ(rows.size(), 5U);
    std::string states;
    for (const auto& row : rows)
        states += fmt::format("{}{} ", row.state, row.at == "--" ? "-" : "");
    EXPECT_EQ(states, "s5- s4- s3- s2- s1 ");
}

} // namespace
