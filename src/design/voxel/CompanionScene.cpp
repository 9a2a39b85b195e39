// SPDX-License-Identifier: Apache-2.0
#include "design/voxel/CompanionScene.h"

#include "design/voxel/VoxelScene.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace ostrel::CompanionScene {

namespace {

constexpr Color light = zolHex("d6d9de");
constexpr Color dark = zolHex("373b42");
constexpr Color white = zolHex("ffffff");
constexpr double topTint = 0.15;
constexpr double rightShade = 0.18;

struct Cube {
    int x;
    int y;
    int z;
    Color color;
};

std::vector<Cube> creature()
{
    std::vector<Cube> cubes;
    for (int x = -2; x <= 1; ++x)
        for (int y = -2; y <= 1; ++y)
            for (int z = 2; z <= 4; ++z)
                cubes.push_back({ x, y, z, light });
    for (const int x : { -2, 1 }) {
        for (const int y : { -1, 1 })
            for (const int z : { 0, 1 })
                cubes.push_back({ x, y, z, dark });
        for (const int z : { 5, 6 })
            cubes.push_back({ x, -1, z, dark });
    }
    cubes.push_back({ -3, -2, 3, dark });
    cubes.push_back({ -4, -2, 4, dark });
    std::ranges::stable_sort(cubes, {}, [](const Cube& cube) { return std::pair(cube.x + cube.y, cube.z); });
    return cubes;
}

void addCube(std::vector<Quad>& quads, const VoxelScene::Projection& at, double x, double y, double z,
    const Color& color, const Color& shade)
{
    const ScenePoint right = at.point(x + 1, y, z + 1);
    const ScenePoint front = at.point(x + 1, y + 1, z + 1);
    const ScenePoint left = at.point(x, y + 1, z + 1);
    const ScenePoint foot = at.point(x + 1, y + 1, z);
    quads.push_back({ { at.point(x, y, z + 1), right, front, left }, color.blended(topTint, white) });
    quads.push_back({ { left, front, foot, at.point(x, y + 1, z) }, color });
    quads.push_back({ { right, front, foot, at.point(x + 1, y, z) }, color.blended(rightShade, shade) });
}

void addFloor(std::vector<Quad>& quads, const VoxelScene::Projection& at, const Color& color)
{
    constexpr int reach = 6;
    constexpr double side = 0.9;
    for (int s = -reach; s <= reach; s += 2)
        for (int x = -reach; x <= reach; ++x) {
            const int y = s - x;
            if (y >= -reach && y <= reach)
                quads.push_back({ { at.point(x, y, 0), at.point(x + side, y, 0),
                                      at.point(x + side, y + side, 0), at.point(x, y + side, 0) },
                    color });
        }
}

} // namespace

double bob(double phase) { return phase < lively ? std::sin(phase * 1.3) * 0.15 : 0; }

std::vector<Quad> scene(double width, double height, double bob, const Colors& colors)
{
    const VoxelScene::Projection at { std::min(width / 20, height / 17), width / 2, height * 0.72 };
    std::vector<Quad> quads;
    addFloor(quads, at, colors.floor);
    for (const Cube& cube : creature())
        addCube(quads, at, cube.x, cube.y, cube.z + bob, cube.color, colors.shade);
    // The eyes, a little before the front face.
    constexpr double y = 2.015;
    for (const double x : { -1.5, 0.5 })
        quads.push_back({ { at.point(x, y, 4.25 + bob), at.point(x + 0.55, y, 4.25 + bob),
                              at.point(x + 0.55, y, 3.7 + bob), at.point(x, y, 3.7 + bob) },
            dark });
    addCube(quads, at, 3, 1, 0, colors.signal, colors.shade);
    return quads;
}

} // namespace ostrel::CompanionScene
