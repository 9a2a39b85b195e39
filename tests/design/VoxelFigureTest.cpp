// SPDX-License-Identifier: Apache-2.0
#include "design/voxel/VoxelFigure.h"
#include "design/voxel/VoxelScene.h"
#include "design/voxel/ZOLVoxelModels.h"
#include "design/voxel/ZOLVoxelMotion.h"

#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using enum ZOLVoxelColor;

constexpr double tick = ZOLVoxelMotion::tick;

ZOLVoxelModel made(std::vector<ZOLVoxel> voxels, std::optional<ZOLVoxelGesture> gesture = {})
{
    return { "made", "made", "", std::move(voxels), std::move(gesture) };
}

ZOLVoxelColor at(const VoxelFigure& figure, const ZOLVoxelCell& cell)
{
    return figure.cubes()[figure.cellIndex(cell).value()].c;
}

TEST(VoxelFigure, AClickScattersChangesInPiecesAndFallsTogether)
{
    VoxelFigure figure(ZOLVoxelModels::tessit());
    const auto before = figure.cubes();
    figure.beginClick();
    for (int ticks = 1; ticks <= 13; ++ticks) {
        figure.step(tick);
        const double phase = ticks * tick;
        EXPECT_EQ(figure.cubes() != before, phase >= 0.25) << phase;
        EXPECT_EQ(figure.running(), phase < 0.8) << phase;
    }
    EXPECT_TRUE(figure.progress().empty());
    EXPECT_EQ(figure.cubes(), VoxelScene::sorted(figure.cubes())) << "still in drawing order";
    // Front first on the way out, rear first on the way in.
    figure.beginClick();
    EXPECT_EQ(figure.scatterProgress(1), 0);
    figure.step(0.15);
    EXPECT_EQ(figure.scatterProgress(1), 1);
    EXPECT_NEAR(figure.scatterProgress(0), 0.125 * 8 / 27, 1e-9) << "a third of its way, cubed";
    figure.step(0.1 + 0.55 * 0.43);
    EXPECT_NEAR(figure.scatterProgress(0), 0, 1e-9);
    EXPECT_EQ(figure.scatterProgress(1), 1);
    VoxelFigure appearing(ZOLVoxelModels::ostrel());
    appearing.beginAppear();
    EXPECT_EQ(appearing.scatterProgress(0), 1);
    for (int ticks = 1; ticks <= 12; ++ticks) {
        appearing.step(tick);
        EXPECT_EQ(appearing.running(), ticks * tick < 0.7);
    }
    EXPECT_EQ(appearing.cubes(), VoxelScene::sorted(ZOLVoxelModels::ostrel().voxels));
}

TEST(VoxelFigure, AFlashComesAfterTheClickRunForAsLongAsItsLimitsAllow)
{
    for (const auto& [hold, kept] :
        { std::pair { 0.14, 0.14 }, { 9.0, 0.6 }, { 0.0, 0.04 }, { -3.0, 0.04 } }) {
        VoxelFigure figure(made({ { 0, 0, 0, ink }, { 1, 0, 0, mid } },
            ZOLVoxelFlash { { { 1, 0, 0 }, { 7, 7, 7 }, { 1, 0, 0 } }, light, hold }));
        EXPECT_EQ(figure.flashHold(), kept);
        figure.beginClick();
        figure.step(0.79);
        EXPECT_EQ(at(figure, { 1, 0, 0 }), mid);
        figure.step(0.01);
        EXPECT_EQ(at(figure, { 1, 0, 0 }), light);
        figure.step(kept - 0.01);
        EXPECT_TRUE(figure.running());
        figure.step(0.02);
        EXPECT_FALSE(figure.running());
        EXPECT_EQ(at(figure, { 1, 0, 0 }), mid);
        figure.startFlash();
        figure.endRun();
        EXPECT_EQ(at(figure, { 1, 0, 0 }), mid) << "a run that is ended leaves nothing painted";
    }
    EXPECT_FALSE(VoxelFigure(ZOLVoxelModels::tessit()).flashHold());
}

TEST(VoxelFigure, AMirrorTurnsOnItsAxisAndBack)
{
    for (const auto& [axis, expected] : { std::pair { "x", ZOLVoxelCell { 4, 1, 5 } }, { "y", { 2, 3, 5 } },
             { "z", { 2, 1, 9 } }, { "other", { 2, 1, 9 } } }) {
        VoxelFigure figure(made({ { 2, 1, 5, red }, { 4, 3, 9, ink } }, ZOLVoxelMirror { axis }));
        const auto before = figure.cubes();
        figure.applyStateGesture();
        EXPECT_EQ(at(figure, expected), red) << axis;
        figure.applyStateGesture();
        EXPECT_EQ(figure.cubes(), before);
    }
}

TEST(VoxelFigure, ACycleWalksThroughItsCellsAndPutsBackWhatWasThere)
{
    VoxelFigure dial(ZOLVoxelModels::pellam());
    for (const ZOLVoxelCell& cell : { ZOLVoxelCell { 8, 5, 6 }, { 4, 5, 6 }, { 10, 5, 6 }, { 6, 5, 6 } }) {
        dial.applyStateGesture();
        for (const int x : { 4, 6, 8, 10 })
            EXPECT_EQ(at(dial, { x, 5, 6 }), x == cell.x ? red : mid) << cell.x;
    }
    // Of this figure the red cell stands second: the first click changes nothing, and the cell goes back to
    // the fallback and not to the light of its twin.
    VoxelFigure star(ZOLVoxelModels::ruvane());
    const auto before = star.cubes();
    star.applyStateGesture();
    EXPECT_EQ(star.cubes(), before);
    star.applyStateGesture();
    EXPECT_EQ(at(star, { 6, 5, 4 }), red);
    EXPECT_EQ(at(star, { 6, 5, 6 }), mid);
    // Cells without a cube are walked over; one that is red already takes the fallback; a list of one does
    // nothing.
    VoxelFigure gaps(made({ { 0, 0, 0, red }, { 1, 0, 0, red } },
        ZOLVoxelCycle { { { 0, 0, 0 }, { 9, 9, 9 }, { 1, 0, 0 } }, red }));
    gaps.applyStateGesture();
    EXPECT_EQ(at(gaps, { 0, 0, 0 }), mid);
    gaps.applyStateGesture();
    gaps.applyStateGesture();
    EXPECT_EQ(at(gaps, { 1, 0, 0 }), mid);
    EXPECT_EQ(at(gaps, { 0, 0, 0 }), red);
    VoxelFigure single(made({ { 0, 0, 0, ink } }, ZOLVoxelCycle { { { 0, 0, 0 } }, red }));
    single.applyStateGesture();
    EXPECT_EQ(at(single, { 0, 0, 0 }), ink);
}

TEST(VoxelFigure, WithoutAGestureTheOneRedCubeHandsItsMarkToTheNearest)
{
    // In its own slice, not to a light one; of equally near ones in turn, left before right.
    VoxelFigure figure(made({ { 5, 0, 5, red }, { 3, 0, 5, ink }, { 7, 0, 5, mid }, { 5, 0, 6, light },
        { 5, 1, 5, ink }, { 9, 0, 9, ink } }));
    figure.applyStateGesture();
    EXPECT_EQ(at(figure, { 3, 0, 5 }), red);
    EXPECT_EQ(at(figure, { 5, 0, 5 }), ink) << "it takes the other's colour";
    figure.applyStateGesture();
    EXPECT_EQ(at(figure, { 5, 0, 5 }), red) << "one nearest: the only choice";
    figure.applyStateGesture();
    EXPECT_EQ(at(figure, { 3, 0, 5 }), red) << "the third transfer takes the first of two";
    VoxelFigure row(made({ { 3, 0, 5, red }, { 5, 0, 5, ink }, { 7, 0, 5, mid } }));
    row.applyStateGesture();
    row.applyStateGesture();
    EXPECT_EQ(at(row, { 7, 0, 5 }), red) << "the second transfer takes the second of two";
    for (std::vector<ZOLVoxel> none : { std::vector<ZOLVoxel> { { 0, 0, 0, red }, { 1, 0, 0, red } },
             { { 0, 0, 0, ink }, { 1, 0, 0, ink } }, { { 0, 0, 0, red }, { 1, 0, 0, light } }, {} }) {
        VoxelFigure still(made(none));
        const auto before = still.cubes();
        still.applyStateGesture();
        EXPECT_EQ(still.cubes(), before);
    }
}

TEST(VoxelFigure, RisesAndSinksInItsTimeAndForgetsAllWithAnotherModel)
{
    VoxelFigure figure(ZOLVoxelModels::vormel());
    figure.setLiftTarget(1);
    EXPECT_TRUE(figure.needsTimer());
    figure.step(0.08);
    EXPECT_DOUBLE_EQ(figure.lift(), 0.5);
    figure.step(0.2);
    EXPECT_EQ(figure.lift(), 1);
    EXPECT_FALSE(figure.needsTimer());
    figure.setLiftTarget(0);
    figure.step(1);
    EXPECT_EQ(figure.lift(), 0);
    figure.applyStateGesture();
    figure.beginClick();
    figure.setModel(ZOLVoxelModels::ostrel());
    EXPECT_FALSE(figure.running());
    EXPECT_EQ(figure.cubes(), VoxelScene::sorted(ZOLVoxelModels::ostrel().voxels));
    EXPECT_FALSE(figure.signalIndex()) << "four red cubes are no signal";
    figure.setModel(ZOLVoxelModels::vormel());
    EXPECT_EQ(figure.cubes()[figure.signalIndex().value()].cell(), (ZOLVoxelCell { 4, 5, 8 }));
    figure.applyStateGesture();
    figure.setModel(
        made({ { 4, 5, 8, light }, { 4, 5, 6, ink } }, ZOLVoxelCycle { { { 4, 5, 8 }, { 4, 5, 6 } }, red }));
    figure.applyStateGesture();
    EXPECT_EQ(at(figure, { 4, 5, 8 }), light) << "what another model's cells went back to is forgotten";
    figure.setModel(made({}));
    figure.beginClick();
    figure.step(2);
    EXPECT_TRUE(figure.cubes().empty());
}

} // namespace
