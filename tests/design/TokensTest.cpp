// SPDX-License-Identifier: Apache-2.0
#include "design/Color.h"
#include "design/ZOLMiniAppTokens.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using namespace ZOLMiniAppTokens;

TEST(ZOLMiniAppTokens, EveryRowIsAValueThatItsReaderTakes)
{
    const std::tuple<std::string, Table, std::size_t> tables[] { { "primitives", primitives, 48 },
        { "N1", N1.semantic, 35 }, { "N1 component", N1.component, 24 }, { "N1Dark", N1Dark.semantic, 35 },
        { "N1Dark component", N1Dark.component, 24 }, { "Web", Web.semantic, 35 },
        { "Web component", Web.component, 24 } };
    for (const auto& [name, table, size] : tables) {
        EXPECT_EQ(table.size(), size) << name;
        std::set<std::string_view> keys;
        for (const Row& row : table) {
            EXPECT_TRUE(keys.insert(row.key).second) << name << " has " << row.key << " twice";
            EXPECT_EQ(table.find(row.key), row.value);
            const bool color = row.value.starts_with('#');
            if (color)
                EXPECT_TRUE(row.value == "#202124" || zolHex(row.value) != unreadableColor)
                    << name << " " << row.key;
            else if (row.value.ends_with("px") || row.value.ends_with("ms"))
                EXPECT_TRUE(number(row.value)) << name << " " << row.key;
            else
                EXPECT_TRUE(row.value.find("monospace") != std::string_view::npos
                    || row.value.starts_with("cubic-bezier("))
                    << name << " " << row.key << " refers to " << row.value;
        }
    }
    EXPECT_FALSE(primitives.find("Ink"));
    EXPECT_EQ(version, "2026.10.02-n1");
}

TEST(ZOLMiniAppTokens, TheSetsShareTheirKeysAndDifferInKnownRowsOnly)
{
    std::map<std::string_view, std::string_view> web;
    std::set<std::string_view> dark;
    for (const Row& row : N1.semantic) {
        ASSERT_TRUE(Web.semantic.find(row.key) && N1Dark.semantic.find(row.key)) << row.key;
        if (*Web.semantic.find(row.key) != row.value)
            web.emplace(row.key, *Web.semantic.find(row.key));
        if (*N1Dark.semantic.find(row.key) != row.value)
            dark.insert(row.key);
    }
    EXPECT_EQ(web,
        (decltype(web) { { "text", "#000000" }, { "divider", "#d9d9d9" }, { "radius-control", "2px" },
            { "radius-card", "2px" }, { "radius-content", "2px" } }));
    EXPECT_EQ(dark,
        (decltype(dark) { "canvas", "surface", "text", "text-secondary", "divider", "hover", "selected",
            "data", "evidence", "warning", "success", "info", "neutral", "text-disabled" }));
    EXPECT_EQ(N1Dark.semantic.find("canvas"), "#202124");
    EXPECT_EQ(N1Dark.semantic.find("surface"), "#202124");
    const std::tuple<std::string_view, std::string_view, std::string_view, std::string_view> components[] {
        { "hint-radius", "16px", "16px", "2px" }, { "button-radius", "8px", "8px", "2px" },
        { "button-height", "44px", "44px", "44px" }, { "focus-ring", "#db303d", "#db303d", "#db303d" },
        { "event-background", "#f2f3f5", "#2d2e31", "#f2f3f5" },
        { "companion-attention", "#98600b", "#d79a3a", "#98600b" },
        { "receipt-unobserved", "#6b6e75", "#9aa0a6", "#6b6e75" }
    };
    for (const auto& [key, n1, n1Dark, webValue] : components) {
        EXPECT_EQ(N1.component.find(key), n1) << key;
        EXPECT_EQ(N1Dark.component.find(key), n1Dark) << key;
        EXPECT_EQ(Web.component.find(key), webValue) << key;
    }
}

TEST(ZOLMiniAppTokens, ANumberIsReadWithItsUnitAndADurationIsNothingUnderReducedMotion)
{
    const std::pair<std::string_view, std::optional<double>> cases[] { { "8px", 8 }, { "1000ms", 1000 },
        { "16", 16 }, { "6.5px", 6.5 }, { "-3px", -3 }, { "+3px", 3 }, { "px8px", 8 }, { "#db303d", {} },
        { "cubic-bezier(.2,.8,.2,1)", {} }, { "", {} }, { "px", {} }, { "8 px", {} }, { "8px 4px", {} },
        { "+-3px", {} }, { "ppxx1", {} }, { std::string_view("8\0", 2), {} } };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(number(text), expected) << text;
    EXPECT_EQ(seconds("160ms", false), 0.16);
    EXPECT_EQ(seconds("160ms", true), 0);
    EXPECT_EQ(seconds("cubic-bezier(.2,.8,.2,1)", false), 0);
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
