// SPDX-License-Identifier: Apache-2.0
#include "design/OstrelStyle.h"
#include "design/Theme.h"

#include "support/FakeUserDefaults.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using enum ZOLThemePolicy::Mode;

TEST(OstrelStyle, ItsColoursAreTheTokensOfBothSets)
{
    const std::tuple<ThemedColor, const char*, const char*, const char*> colors[] {
        { OstrelStyle::bg, "zol.canvas", "#ffffff", "#202124" },
        { OstrelStyle::ink, "zol.text", "#202124", "#f2f3f5" },
        { OstrelStyle::muted, "zol.text-secondary", "#6b6e75", "#9aa0a6" },
        { OstrelStyle::soft, "zol.text-disabled", "#c9cbd1", "#5f6368" },
        { OstrelStyle::hair, "zol.divider", "#e8e9ed", "#3c4043" },
        { OstrelStyle::fill, "zol.data", "#f2f3f5", "#2d2e31" },
        { OstrelStyle::hover, "zol.hover", "#f5f6f8", "#2d2e31" },
        { OstrelStyle::red, "zol.selection", "#db303d", "#db303d" },
        { OstrelStyle::redBright, "zol.selection", "#db303d", "#db303d" },
        { OstrelStyle::amber, "zol.text-secondary", "#6b6e75", "#9aa0a6" },
        { ZOLAppShellStyle::componentRole("hint-text"), "zol.component.hint-text", "#202124", "#f2f3f5" },
        { ZOLAppShellStyle::role("no such row"), "zol.no such row", "#ffffff", "#202124" },
        { ZOLAppShellStyle::themed(ThemedColor::Layer::semantic, "x", "#010203", {}), "zol.x", "#010203",
            "#010203" },
    };
    for (const auto& [color, name, inLight, inDark] : colors) {
        EXPECT_EQ(color.name(), name);
        EXPECT_EQ(color.in(light), zolHex(inLight)) << name;
        EXPECT_EQ(color.in(dark), zolHex(inDark)) << name;
    }
    EXPECT_EQ(ZOLAppShellStyle::plate, zolHex("#ffffff"));
}

TEST(OstrelStyle, TheStoreDecidesUnlessAnOverrideStands)
{
    FakeUserDefaults store;
    EXPECT_EQ(OstrelStyle::theme(store), light);
    ZOLThemePolicy::store(dark, store, "dev.quent.ostrel.theme");
    EXPECT_EQ(OstrelStyle::theme(store), dark);
    EXPECT_EQ(OstrelStyle::mode(store), ThemeMode::dark);
    EXPECT_EQ(OstrelStyle::layerColor(OstrelStyle::bg, store), zolHex("#202124"));
    OstrelStyle::override = light;
    EXPECT_EQ(OstrelStyle::theme(store), light);
    EXPECT_EQ(OstrelStyle::layerColor(OstrelStyle::bg, store), zolHex("#ffffff"));
    OstrelStyle::override.reset();
    EXPECT_EQ(ZOLThemePolicy::key(std::nullopt), "zol.app.theme");

    UI ui;
    const std::tuple<Color Theme::*, const char*, const char*> colors[] { { &Theme::bg, "#f4f2ec",
                                                                              "#1a1b1f" },
        { &Theme::ink, "#222019", "#e8e6e2" }, { &Theme::muted, "#6e6a62", "#9a958d" },
        { &Theme::soft, "#cdcabf", "#3a3a40" }, { &Theme::hair, "#e0ddd4", "#26262a" },
        { &Theme::fill, "#eae7df", "#202127" }, { &Theme::red, "#b23b2c", "#c84545" },
        { &Theme::redBright, "#cf4636", "#ff6b6b" }, { &Theme::amber, "#8a6f1c", "#c7a648" } };
    for (const auto& [color, inLight, inDark] : colors) {
        ui.setMode(ThemeMode::light);
        EXPECT_EQ(ui.theme.*color, zolHex(inLight));
        ui.setMode(ThemeMode::dark);
        EXPECT_EQ(ui.theme.*color, zolHex(inDark));
    }
}

TEST(ZOLAppShellStyle, ReducedMotionTakesEveryDurationAway)
{
    EXPECT_EQ(ZOLAppShellStyle::panelAppear(false), 0.2);
    EXPECT_EQ(ZOLAppShellStyle::windowAppear(false), 0.18);
    EXPECT_EQ(ZOLAppShellStyle::windowAppearShift(false), 6);
    for (const double still : { ZOLAppShellStyle::panelAppear(true), ZOLAppShellStyle::windowAppear(true),
             ZOLAppShellStyle::windowAppearShift(true) })
        EXPECT_EQ(still, 0);
    EXPECT_EQ(ZOLAppShellStyle::controlRadius(), 8);
    EXPECT_EQ(ZOLAppShellStyle::footerSize(), 11);
    EXPECT_EQ(ZOLAppShellStyle::length("no such row", 7), 7);
    EXPECT_EQ(ZOLAppShellStyle::length("canvas", 7), 7) << "a row that is no number";
}

/// WCAG's relative luminance and contrast.
double luminance(const Color& color)
{
    const auto linear
        = [](double c) { return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
}

double contrast(const Color& a, const Color& b)
{
    const double one = luminance(a);
    const double other = luminance(b);
    return (std::max(one, other) + 0.05) / (std::min(one, other) + 0.05);
}

TEST(Contrast, TheDocumentTellsWhatEveryPairOfTheTablesReaches)
{
    const std::pair<std::string, ZOLMiniAppTokens::Set> sets[] { { "N1", ZOLMiniAppTokens::N1 },
        { "N1Dark", ZOLMiniAppTokens::N1Dark }, { "Web", ZOLMiniAppTokens::Web } };
    std::string table;
    for (const auto& [name, set] : sets) {
        for (const char* text : { "text", "text-secondary", "text-disabled", "selection", "evidence",
                 "warning", "danger", "success", "info", "neutral" }) {
            table += fmt::format("| {} | {} |", name, text);
            for (const char* ground : { "canvas", "hover", "data" }) {
                const double ratio
                    = contrast(zolHex(*set.semantic.find(text)), zolHex(*set.semantic.find(ground)));
                // Truncated, so that no pair is told to reach what it just misses.
                table += fmt::format(" {:.2f} {} |", std::floor(ratio * 100) / 100,
                    ratio >= 4.5     ? "AA"
                        : ratio >= 3 ? "large"
                                     : "no");
            }
            table += '\n';
        }
        EXPECT_EQ(set.semantic.find("surface"), set.semantic.find("canvas")) << "a ground not told of";
        EXPECT_EQ(set.semantic.find("selected"), set.semantic.find("hover")) << "a ground not told of";
    }
    std::ifstream file(OSTREL_SOURCE "/docs/design.md");
    const std::string document(std::istreambuf_iterator<char>(file), {});
    EXPECT_NE(document.find(table), std::string::npos) << "docs/design.md should hold\n" << table;
}

} // namespace
