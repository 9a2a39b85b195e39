// SPDX-License-Identifier: Apache-2.0
#include "design/voxel/AutomationBadge.h"
#include "design/voxel/ZOLVoxelModels.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

bool filled(const ZOLVoxelModel& model, const ZOLVoxelCell& cell)
{
    return std::ranges::find(model.voxels, cell, &ZOLVoxel::cell) != model.voxels.end();
}

TEST(ZOLVoxelModels, EachFigureHasItsCubesInTheGridOnceEach)
{
    struct Case {
        std::string_view name;
        std::string_view label;
        std::array<std::ptrdiff_t, 4> counts; ///< ink, mid, light, red
        std::string_view note;
    };
    const Case cases[] {
        { "family", "zolwerk · family profile", { 114, 0, 0, 8 },
            "head circle, vertical slit with stem, red eye, crescent smile – from zol-logo-light.png" },
        { "tessit", "tessit loop", { 51, 0, 0, 1 }, "two opposite arrows, red tip on the outgoing one" },
        { "vormel", "vormel trim", { 20, 17, 144, 1 },
            "panel: light plate, ink sidebar, three rows, red cursor" },
        { "ostrel", "ostrel", { 116, 64, 0, 4 },
            "hex-plan crystal column, stepped tip, red core on the front face" },
        { "pellam", "pellam dial", { 24, 23, 144, 1 },
            "light plate, ink header, six-by-four day grid, red today" },
        { "ruvane", "ruvane", { 16, 32, 23, 1 },
            "четыре луча от центра, красный воксель это точка баланса, она ходит по вертикали" },
    };
    ASSERT_EQ(ZOLVoxelModels::all().size(), std::size(cases));
    for (std::size_t at = 0; at < std::size(cases); ++at) {
        const ZOLVoxelModel& model = ZOLVoxelModels::all()[at];
        EXPECT_EQ(ZOLVoxelModels::model(cases[at].name), &model);
        EXPECT_EQ(model.label, cases[at].label);
        EXPECT_EQ(model.note, cases[at].note);
        std::set<std::tuple<int, int, int>> cells;
        for (const auto& [x, y, z, color] : model.voxels) {
            EXPECT_TRUE(cells.emplace(x, y, z).second) << model.name << " " << x << "," << y << "," << z;
            for (const int coordinate : { x, y, z })
                EXPECT_TRUE(coordinate >= 0 && coordinate < 12) << model.name;
        }
        for (const ZOLVoxelColor color : zolVoxelColors)
            EXPECT_EQ(std::ranges::count(model.voxels, color, &ZOLVoxel::c),
                cases[at].counts[static_cast<std::size_t>(color)])
                << model.name << " " << rawValue(color);
        EXPECT_EQ(model.signals().size(), static_cast<std::size_t>(cases[at].counts[3]));
    }
    EXPECT_EQ(ZOLVoxelModels::model("Ostrel"), nullptr);
    EXPECT_EQ(ZOLVoxelModels::version, "2026-09-14");
    EXPECT_EQ(ZOLVoxelModels::projection, "screen = (ox + (x - y) * u, oy + (x + y) * 0.48 * u - z * u)");
    EXPECT_EQ(ZOLVoxelModels::ruvane().signals().front(), (ZOLVoxelCell { 6, 5, 6 }));
    EXPECT_EQ(ZOLVoxelModels::pellam().signals().front(), (ZOLVoxelCell { 6, 5, 6 }));
    EXPECT_EQ(ZOLVoxelModels::vormel().signals().front(), (ZOLVoxelCell { 4, 5, 8 }));
    EXPECT_EQ(ZOLVoxelModels::tessit().signals().front(), (ZOLVoxelCell { 9, 6, 7 }));
}

TEST(ZOLVoxelModels, GesturesNameFilledCells)
{
    struct Case {
        std::string_view name;
        std::size_t index; ///< of the variant: flash, mirror, cycle
        std::size_t cells;
        ZOLVoxelColor color;
        double hold;
    };
    for (const auto& [name, index, count, color, hold] :
        { Case { "family", 0, 8, ZOLVoxelColor::light, 0.14 }, { "tessit", 1, 0, {}, 0 },
            { "vormel", 2, 3, ZOLVoxelColor::red, 0 }, { "ostrel", 0, 4, ZOLVoxelColor::red, 0.16 },
            { "pellam", 2, 4, ZOLVoxelColor::red, 0 }, { "ruvane", 2, 4, ZOLVoxelColor::red, 0 } }) {
        const ZOLVoxelModel& model = *ZOLVoxelModels::model(name);
        ASSERT_TRUE(model.gesture && model.gesture->index() == index) << name;
        std::vector<ZOLVoxelCell> cells;
        if (const auto* flash = std::get_if<ZOLVoxelFlash>(&*model.gesture)) {
            cells = flash->cells;
            EXPECT_EQ(std::pair(flash->color, flash->hold), std::pair(color, hold)) << name;
        } else if (const auto* cycle = std::get_if<ZOLVoxelCycle>(&*model.gesture)) {
            cells = cycle->cells;
            EXPECT_EQ(cycle->color, color) << name;
        } else {
            EXPECT_EQ(std::get<ZOLVoxelMirror>(*model.gesture).axis, "x");
        }
        EXPECT_EQ(cells.size(), count) << name;
        for (const ZOLVoxelCell& cell : cells)
            EXPECT_TRUE(filled(model, cell)) << name << " " << cell.x << "," << cell.y << "," << cell.z;
    }
}

TEST(AutomationBadge, EachFamilyHasItsShapeAndAnyOtherWordIsADot)
{
    const std::tuple<const char*, const char*, std::size_t, ZOLVoxelCell> cases[] { { "panel", "orca", 5,
                                                                                        { 0, 0, 1 } },
        { "dot", "codex app", 3, { 0, 0, 2 } }, { "bar", "launchd", 4, { 2, 0, 1 } },
        { "stack", "systemd", 5, { 1, 0, 2 } }, { "ring", "cloud", 5, { 1, 1, 1 } } };
    for (const auto& [word, label, count, last] : cases) {
        const AutomationVoxelFamily family = AutomationBadge::named(word);
        EXPECT_EQ(AutomationBadge::rawValue(family), word);
        EXPECT_EQ(AutomationBadge::label(family), label);
        EXPECT_EQ(AutomationBadge::cells(family).size(), count) << word;
        EXPECT_EQ(AutomationBadge::cells(family).back(), last) << word;
    }
    for (const char* other : { "", "Panel", "cron" })
        EXPECT_EQ(AutomationBadge::named(other), AutomationVoxelFamily::dot);
}

/// The tops are a cell's own colour moved 28 % to the ground, and the one signal cell is told by the list and
/// not by the drawing order: of `panel` it is drawn before the last.
TEST(AutomationBadge, DrawsRearCellsFirstAndTheLastListedOneAsTheSignal)
{
    const Color body = zolHex("000000");
    const Color signal = zolHex("ff0000");
    const Color ground = zolHex("ffffff");
    const auto quads
        = AutomationBadge::scene(AutomationVoxelFamily::panel, { 0, 0, 18, 18 }, 3, { body, signal, ground });
    ASSERT_EQ(quads.size(), 15U);
    std::vector<bool> red;
    for (std::size_t at = 1; at < quads.size(); at += 3)
        red.push_back(quads[at].fill == signal);
    EXPECT_EQ(red, (std::vector<bool> { false, false, false, true, false }));
    EXPECT_EQ(quads[0].fill, body.blended(0.28, ground));
    EXPECT_EQ(quads[2].fill, body.blended(0.22, Color {}));
    // The first cell, (0, 0, 0): its top's rear corner is the origin.
    EXPECT_EQ(quads[0].corners[0].x, 9);
    EXPECT_NEAR(quads[0].corners[0].y, 9 - 3.3, 1e-9);
    EXPECT_EQ(quads[0].corners[1].x, 12);
    EXPECT_NEAR(quads[0].corners[1].y, 9 - 3.3 + 0.48 * 3, 1e-9);
    EXPECT_NEAR(quads[2].corners[3].y, 9 - 3.3 + 1.96 * 3, 1e-9);
}

} // namespace
