// SPDX-License-Identifier: Apache-2.0
#include "design/voxel/AutomationBadge.h"
#include "design/voxel/ZOLVoxelModels.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

TEST(ZOLVoxelModels, AreFoundByTheirNamesAndGesturesNameFilledCells)
{
    struct Case {
        const char* name;
        const char* label;
        std::size_t signals; ///< how many red cubes it has
        std::size_t gesture; ///< of the variant: flash, mirror, cycle
        std::size_t cells; ///< that the gesture names
        double hold = 0;
    };
    const Case cases[] { { "family", "zolwerk · family profile", 8, 0, 8, 0.14 },
        { "tessit", "tessit loop", 1, 1, 0 }, { "vormel", "vormel trim", 1, 2, 3 },
        { "ostrel", "ostrel", 4, 0, 4, 0.16 }, { "pellam", "pellam dial", 1, 2, 4 },
        { "ruvane", "ruvane", 1, 2, 4 } };
    ASSERT_EQ(ZOLVoxelModels::all().size(), std::size(cases));
    for (std::size_t at = 0; at < std::size(cases); ++at) {
        const auto& [name, label, signalCount, gesture, count, hold] = cases[at];
        SCOPED_TRACE(name);
        const ZOLVoxelModel& model = ZOLVoxelModels::all()[at];
        EXPECT_EQ(ZOLVoxelModels::model(name), &model);
        EXPECT_EQ(model.label, label);
        EXPECT_EQ(model.signals().size(), signalCount);
        ASSERT_TRUE(model.gesture && model.gesture->index() == gesture);
        std::vector<ZOLVoxelCell> cells;
        if (const auto* flash = std::get_if<ZOLVoxelFlash>(&*model.gesture)) {
            cells = flash->cells;
            EXPECT_EQ(flash->hold, hold);
        } else if (const auto* cycle = std::get_if<ZOLVoxelCycle>(&*model.gesture))
            cells = cycle->cells;
        EXPECT_EQ(cells.size(), count);
        for (const ZOLVoxelCell& cell : cells)
            EXPECT_NE(std::ranges::find(model.voxels, cell, &ZOLVoxel::cell), model.voxels.end())
                << cell.x << "," << cell.y << "," << cell.z;
    }
    EXPECT_EQ(ZOLVoxelModels::model("Ostrel"), nullptr);
    EXPECT_EQ(ZOLVoxelModels::vormel().signals().front(), (ZOLVoxelCell { 4, 5, 8 }));
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
