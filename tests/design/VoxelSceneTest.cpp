// SPDX-License-Identifier: Apache-2.0
#include "design/voxel/VoxelScene.h"
#include "design/voxel/CompanionScene.h"
#include "design/voxel/ZOLVoxelModels.h"
#include "design/voxel/ZOLVoxelMotion.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using enum ZOLVoxelColor;
using VoxelScene::Look;

/// The place of the front corner of a cube's top, for a figure that fills `rect`, by the rules of the
/// projection alone.
ScenePoint topFront(const ZOLVoxel& cube, const SceneRect& box, const SceneRect& rect, double pad)
{
    const double u = std::min(rect.width / (box.width + 2 * pad), rect.height / (box.height + 2 * pad));
    const double ox = rect.midX() - (box.x + box.width / 2) * u;
    const double oy = rect.midY() - (box.y + box.height / 2) * u;
    return { ox + (cube.x - cube.y) * u, oy + ((cube.x + cube.y + 2) * 0.48 - cube.z - 1) * u };
}

void expectNear(const ScenePoint& actual, const ScenePoint& expected)
{
    EXPECT_NEAR(actual.x, expected.x, 1e-9);
    EXPECT_NEAR(actual.y, expected.y, 1e-9);
}

TEST(VoxelScene, DrawsTheRearFirstAndOneCubeInEachCell)
{
    const ZOLVoxel list[] { { 2, 2, 2, ink }, { 0, 1, 0, mid }, { 0, 0, 0, red }, { 0, 0, 1, light },
        { 1, 0, 0, light }, { 0, 0, 0, ink }, { -1, 0, 0, ink } };
    const std::vector<ZOLVoxel> expected { { -1, 0, 0, ink }, { 0, 0, 0, red }, { 0, 0, 1, light },
        { 0, 1, 0, mid }, { 1, 0, 0, light }, { 2, 2, 2, ink } };
    EXPECT_EQ(VoxelScene::sorted(list), expected);
}

TEST(VoxelScene, TheBoxHoldsTheCubesAndTheirColumnsDownToTheFloor)
{
    const ZOLVoxel one[] { { 1, 2, 3, ink } };
    const SceneRect box = VoxelScene::unitBounds(one);
    EXPECT_EQ(std::pair(box.x, box.x + box.width), std::pair(-2.0, 0.0));
    EXPECT_NEAR(box.y, 3 * 0.48 - 4, 1e-12) << "the top's rear corner";
    EXPECT_NEAR(box.y + box.height, 5 * 0.48, 1e-12) << "the floor's front corner";
    EXPECT_EQ(VoxelScene::unitBounds({}), (SceneRect { -1, -1, 2, 2 }));
    EXPECT_TRUE(VoxelScene::scene({}, { 0, 0, 40, 40 }, {}).empty());
    for (const SceneRect& nothing : { SceneRect {}, SceneRect { 0, 0, -5, 9 }, SceneRect { 0, 0, 9, 0 } })
        EXPECT_TRUE(VoxelScene::scene(one, nothing, {}).empty());
}

TEST(VoxelScene, AFigureAtRestHasThreeFacesACubeWhereTheProjectionPutsThem)
{
    const SceneRect rect { 3, 5, 200, 186 };
    for (const ZOLVoxelModel& model : ZOLVoxelModels::all()) {
        const auto cubes = VoxelScene::sorted(model.voxels);
        const SceneRect box = VoxelScene::unitBounds(cubes);
        std::set<std::pair<int, int>> columns;
        for (const ZOLVoxel& cube : cubes)
            columns.emplace(cube.x, cube.y);
        const auto quads = VoxelScene::scene(cubes, rect, {});
        ASSERT_EQ(quads.size(), columns.size() + 3 * cubes.size()) << model.name;
        EXPECT_EQ(VoxelScene::scene(cubes, rect, { .shadow = false }).size(), 3 * cubes.size());
        for (std::size_t i = 0; i < cubes.size(); ++i) {
            const Quad* faces = &quads[columns.size() + 3 * i];
            const ScenePoint front = topFront(cubes[i], box, rect, 1);
            expectNear(faces[0].corners[2], front);
            expectNear(faces[1].corners[1], front);
            expectNear(faces[2].corners[1], front);
        }
        for (const Quad& quad : quads)
            for (const ScenePoint& corner : quad.corners) {
                EXPECT_TRUE(corner.x >= rect.x && corner.x <= rect.x + rect.width) << model.name;
                EXPECT_TRUE(corner.y >= rect.y && corner.y <= rect.y + rect.height) << model.name;
            }
    }
}

TEST(VoxelScene, FacesTakeTheirColoursFromTheRoleAndATemplateIsBlackAlone)
{
    struct Case {
        ZOLVoxelColor role;
        const char* top;
        const char* left;
        const char* right;
        const char* edge;
        double mono;
    };
    for (const auto& [role, top, left, right, edge, strength] :
        { Case { ink, "#6b6e75", "#202124", "#6b6e75", "#ffffff", 1 },
            { mid, "#e8e9ed", "#6b6e75", "#6b6e75", "#ffffff", 0.7 },
            { light, "#ffffff", "#e8e9ed", "#f2f3f5", "#6b6e75", 0.16 },
            { red, "#db303d", "#db303d", "#db303d", "#ffffff", 1 } }) {
        const ZOLVoxel cube[] { { 0, 0, 0, role } };
        const auto quads = VoxelScene::scene(cube, { 0, 0, 40, 40 }, {});
        ASSERT_EQ(quads.size(), 4U);
        EXPECT_EQ(quads[0].fill, zolHex("#e8e9ed")) << "the shadow";
        EXPECT_EQ(quads[0].strokeWidth, 0);
        EXPECT_EQ(quads[1].fill, zolHex(top)) << rawValue(role);
        EXPECT_EQ(quads[2].fill, zolHex(left)) << rawValue(role);
        EXPECT_EQ(quads[3].fill, zolHex(right)) << rawValue(role);
        EXPECT_EQ(quads[1].stroke, zolHex(edge).faded(0.35)) << rawValue(role);
        EXPECT_GT(quads[1].strokeWidth, 0);
        const auto mono = VoxelScene::scene(cube, { 0, 0, 40, 40 }, { .mono = true });
        ASSERT_EQ(mono.size(), 3U) << "no shadow";
        const std::array shares { 0.45, 1.0, 0.7 };
        for (std::size_t face = 0; face < 3; ++face) {
            EXPECT_EQ(std::tuple(mono[face].fill.red, mono[face].fill.green, mono[face].fill.blue),
                std::tuple(0, 0, 0));
            EXPECT_NEAR(mono[face].fill.alpha, strength * shares[face], 1e-12) << rawValue(role);
            EXPECT_EQ(mono[face].strokeWidth, 0);
        }
    }
}

TEST(VoxelScene, OutlinesBeginAtCellsOfFourPoints)
{
    const ZOLVoxel cube[] { { 0, 0, 0, ink } };
    // Alone with no margin, the figure is two cells wide.
    for (const auto& [width, stroke] : { std::pair { 7.99, 0.0 }, { 8.0, 0.24 }, { 20.0, 0.6 } })
        EXPECT_NEAR(
            VoxelScene::scene(cube, { 0, 0, width, 99 }, { .pad = 0 }).back().strokeWidth, stroke, 1e-9);
}

TEST(VoxelScene, TheNearMovesWithThePointerTheFarAgainstItAndTheShadowStaysOnTheFloor)
{
    const ZOLVoxel cubes[] { { 0, 0, 0, ink }, { 1, 1, 0, ink }, { 2, 2, 0, ink } };
    const SceneRect rect { 0, 0, 100, 100 };
    const auto still = VoxelScene::scene(cubes, rect, {});
    const auto moved = VoxelScene::scene(cubes, rect, { .hover = 0.5, .lift = 0.5 });
    const double lift = 2 * (1 - std::pow(0.5, 3));
    for (std::size_t at = 0; at < still.size(); ++at) {
        const bool shadow = at < 3;
        const double dx = shadow ? 0 : (static_cast<double>((at - 3) / 3) - 1) * 0.5 * 2;
        for (std::size_t corner = 0; corner < 4; ++corner)
            expectNear(moved[at].corners[corner],
                { still[at].corners[corner].x + dx, still[at].corners[corner].y - (shadow ? 0 : lift) });
    }
    // All on one depth line: nothing to lean.
    const ZOLVoxel flat[] { { 0, 1, 0, ink }, { 1, 0, 5, ink } };
    EXPECT_EQ(VoxelScene::scene(flat, rect, { .hover = 1 }).back().corners,
        VoxelScene::scene(flat, rect, {}).back().corners);
}

TEST(VoxelScene, ACubeOnItsWayIsDisplacedByItsOwnNoiseAndFades)
{
    EXPECT_DOUBLE_EQ(VoxelScene::rnd(0), (9301.0 + 49297) / 233280 - 0.5);
    EXPECT_DOUBLE_EQ(VoxelScene::rnd(24), std::fmod(25 * 9301.0 + 49297, 233280) / 233280 - 0.5);
    for (const std::size_t index : { std::size_t { 233280 }, std::numeric_limits<std::size_t>::max() }) {
        EXPECT_GE(VoxelScene::rnd(index), -0.5);
        EXPECT_LT(VoxelScene::rnd(index), 0.5);
    }
    const ZOLVoxel cubes[] { { 0, 0, 0, ink }, { 3, 1, 2, mid } };
    const SceneRect rect { 0, 0, 120, 90 };
    const SceneRect box = VoxelScene::unitBounds(cubes);
    const double u = std::min(120 / (box.width + 2), 90 / (box.height + 2));
    const double p = 0.4;
    const std::vector<double> progress { 0, p };
    const auto still = VoxelScene::scene(cubes, rect, {});
    const auto away = VoxelScene::scene(cubes, rect, { .progress = progress });
    const ScenePoint front = topFront(cubes[1], box, rect, 1);
    const ScenePoint home { front.x, front.y + (1 - 2 * 0.48) * u };
    const ScenePoint flown { front.x + ((home.x - 60) * 1.1 + VoxelScene::rnd(1) * 6 * u) * p,
        front.y + ((home.y - 45) * 0.9 - u * 3.5 + VoxelScene::rnd(7) * 4 * u) * p };
    const Quad& top = away[away.size() - 3];
    expectNear(top.corners[2], flown);
    EXPECT_NEAR(top.fill.alpha, 0.6, 1e-12);
    EXPECT_NEAR(top.stroke.alpha, 0.6 * 0.35, 1e-12);
    EXPECT_EQ(away[2].corners, still[2].corners) << "a cube at home stays";
    const std::vector<double> one { 0.5 };
    EXPECT_EQ(VoxelScene::scene(cubes, rect, { .progress = one }).back().corners, still.back().corners)
        << "past the list's end a cube is at home";
}

TEST(VoxelScene, BandsFollowTheLineOfSightInSixToEightSteps)
{
    for (const auto& [levels, steps] : { std::pair { 1, 6 }, { 6, 6 }, { 7, 7 }, { 8, 8 }, { 30, 8 } }) {
        std::vector<ZOLVoxel> column;
        for (int z = 0; z < levels; ++z)
            column.push_back({ -3, 0, z, ink });
        const auto bands = VoxelScene::bands(column);
        ASSERT_EQ(bands.size(), column.size());
        for (int z = 0; z < levels; ++z)
            EXPECT_DOUBLE_EQ(
                bands[static_cast<std::size_t>(z)], std::floor(z * 1.0 / levels * steps) / (steps - 1))
                << levels << " " << z;
    }
    EXPECT_TRUE(VoxelScene::bands({}).empty());
}

/// The creature's place by its own rule: 20 by 17 units, the origin 72 % down.
TEST(CompanionScene, StandsOnItsFloorAndOnlyItselfBobs)
{
    const CompanionScene::Colors colors { zolHex("#010101"), zolHex("#000000"), zolHex("#ff0000") };
    const auto still = CompanionScene::scene(126, 138, 0, colors);
    const auto risen = CompanionScene::scene(126, 138, 0.1, colors);
    // Every second diagonal of a thirteen by thirteen floor, those within reach: 13 + 2 (11 + 9 + 7).
    constexpr std::size_t floors = 67;
    ASSERT_EQ(still.size(), floors + 3 * (48 + 8 + 4 + 2) + 2 + 3);
    EXPECT_EQ(still[floors - 1].fill, colors.floor);
    for (const char* own : { "#d6d9de", "#373b42" })
        EXPECT_NE(std::ranges::find(still, zolHex(own), &Quad::fill), still.end()) << own;
    EXPECT_EQ(CompanionScene::calmSignal, zolHex("#8b939e"));
    const double u = std::min(126 / 20.0, 138 / 17.0);
    for (std::size_t at = 0; at < still.size(); ++at) {
        const bool bobs = at >= floors && at < still.size() - 3;
        EXPECT_NEAR(still[at].corners[0].y - risen[at].corners[0].y, bobs ? 0.1 * u : 0, 1e-9) << at;
    }
    const Quad& signal = still[still.size() - 2];
    EXPECT_EQ(signal.fill, colors.signal);
    expectNear(signal.corners[1], { 63 + (4 - 2) * u, 138 * 0.72 + ((4 + 2) * 0.48 - 1) * u });
    EXPECT_EQ(still.back().fill, colors.signal.blended(0.18, colors.shade));
    EXPECT_EQ(still[still.size() - 3].fill, colors.signal.blended(0.15, zolHex("#ffffff")));
    EXPECT_EQ(CompanionScene::bob(2), 0);
    EXPECT_DOUBLE_EQ(CompanionScene::bob(1), std::sin(1.3) * 0.15);
}

TEST(ZOLVoxelMotion, EachBandFliesForItsShareAndTheLastLandsAtTheEnd)
{
    for (const double total : { 0.7, 0.55 })
        for (const double band : { 0.0, 0.5, 1.0 }) {
            const double start = band * total * 0.57;
            const double end = start + total * 0.43;
            EXPECT_NEAR(ZOLVoxelMotion::assembleProgress(start, total, band), 0, 1e-12);
            EXPECT_NEAR(ZOLVoxelMotion::assembleProgress((start + end) / 2, total, band), 0.875, 1e-12);
            EXPECT_NEAR(ZOLVoxelMotion::assembleProgress(end, total, band), 1, 1e-12);
        }
}

} // namespace
