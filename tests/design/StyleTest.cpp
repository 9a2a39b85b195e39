// SPDX-License-Identifier: Apache-2.0
#include "design/OstrelStyle.h"
#include "design/Theme.h"

#include "support/FakeUserDefaults.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using enum ZOLThemePolicy::Mode;

TEST(OstrelStyle, ItsColoursAreTheTokensOfBothSets)
{
    const std::pair<ThemedColor, const char*> colors[] { { OstrelStyle::bg, "canvas" },
        { OstrelStyle::ink, "text" }, { OstrelStyle::muted, "text-secondary" },
        { OstrelStyle::soft, "text-disabled" }, { OstrelStyle::hair, "divider" },
        { OstrelStyle::fill, "data" }, { OstrelStyle::hover, "hover" }, { OstrelStyle::red, "selection" },
        { OstrelStyle::redBright, "selection" }, { OstrelStyle::amber, "text-secondary" } };
    for (const auto& [color, token] : colors) {
        EXPECT_EQ(color.name(), std::string("zol.") + token);
        EXPECT_EQ(color.in(light), zolHex(*ZOLMiniAppTokens::N1.semantic.find(token))) << token;
        EXPECT_EQ(color.in(dark), zolHex(*ZOLMiniAppTokens::N1Dark.semantic.find(token))) << token;
    }
    EXPECT_EQ(ZOLAppShellStyle::componentRole("hint-text").name(), "zol.component.hint-text");
    EXPECT_EQ(ZOLAppShellStyle::componentRole("hint-text").in(dark), zolHex("#f2f3f5"));
    const auto unknown = ZOLAppShellStyle::role("no such row");
    EXPECT_EQ(
        std::pair(unknown.in(light), unknown.in(dark)), std::pair(zolHex("#ffffff"), zolHex("#202124")));
    const auto one = ZOLAppShellStyle::themed(ThemedColor::Layer::semantic, "x", "#010203", {});
    EXPECT_EQ(std::pair(one.in(light), one.in(dark)), std::pair(zolHex("#010203"), zolHex("#010203")));
    EXPECT_FALSE(ZOLMiniAppTokens::primitives.find("Ink")) << "keys are exact";
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
    for (const auto& [mode, ground] :
        { std::pair(ThemeMode::dark, "#1a1b1f"), { ThemeMode::light, "#f4f2ec" } }) {
        ui.setMode(mode);
        EXPECT_EQ(ui.theme.bg, zolHex(ground));
    }
}

TEST(ZOLAppShellStyle, ReducedMotionTakesEveryDurationAway)
{
    for (const auto& [duration, moving] : { std::pair(&ZOLAppShellStyle::panelAppear, 0.2),
             { &ZOLAppShellStyle::windowAppear, 0.18 }, { &ZOLAppShellStyle::windowAppearShift, 6.0 } }) {
        EXPECT_EQ(duration(false), moving);
        EXPECT_EQ(duration(true), 0);
    }
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

TEST(ZOLMiniAppTokens, ANumberIsReadWithItsUnitAndADurationIsNothingUnderReducedMotion)
{
    const std::pair<std::string_view, std::optional<double>> cases[] { { "8px", 8 }, { "1000ms", 1000 },
        { "16", 16 }, { "6.5px", 6.5 }, { "-3px", -3 }, { "+3px", 3 }, { "px8px", 8 }, { "#db303d", {} },
        { "cubic-bezier(.2,.8,.2,1)", {} }, { "", {} }, { "px", {} }, { "8 px", {} }, { "8px 4px", {} },
        { "+-3px", {} }, { "ppxx1", {} }, { std::string_view("8\0", 2), {} } };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(ZOLMiniAppTokens::number(text), expected) << text;
    EXPECT_EQ(ZOLMiniAppTokens::seconds("160ms", false), 0.16);
    EXPECT_EQ(ZOLMiniAppTokens::seconds("160ms", true), 0);
    EXPECT_EQ(ZOLMiniAppTokens::seconds("cubic-bezier(.2,.8,.2,1)", false), 0);
}

TEST(Color, ReadsSixOrEightDigitsAndNothingElse)
{
    const std::pair<std::string_view, Color> cases[] { { "#ff0080", { 1, 0, 128 / 255.0, 1 } },
        { "FF0080", { 1, 0, 128 / 255.0, 1 } }, { " \t#00000033\t", { 0, 0, 0, 0.2 } } };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(zolHex(text), expected) << text;
    for (const std::string_view broken :
        { "", " ", "#", "##ffffff", "#fff", "#fffffff", "#gggggg", "#ffffff0", "# ffffff", "-fffff",
            "#ffffff\n", "0xffff", "\xff\xff\xff\xff\xff\xff", "#ffffffffff" })
        EXPECT_EQ(zolHex(broken), zolHex("#202124")) << broken;
    EXPECT_EQ(zolHex("#204060").blended(0.25, zolHex("#60a0e0")), zolHex("#305880"));
}

} // namespace
