// SPDX-License-Identifier: Apache-2.0
#include "design/voxel/VoxelScene.h"

#include "design/ZOLMiniAppTokens.h"
#include "design/voxel/ZOLVoxelMotion.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <set>
#include <tuple>
#include <utility>

namespace ostrel::VoxelScene {

namespace {

constexpr double strokeShare = 0.06; ///< of a cell's edge
constexpr double strokeAlpha = 0.35;
constexpr double shadowInset = 0.08;
constexpr double shadowSide = 0.84;

constexpr Color token(std::string_view name, std::string_view fallback)
{
    return zolHex(ZOLMiniAppTokens::primitives.find(name).value_or(fallback));
}

constexpr Color ink = token("ink", "#202124");
constexpr Color mid = token("gray600", "#6b6e75");
constexpr Color white = token("white", "#ffffff");
constexpr Color divider = token("gray200", "#e8e9ed");
constexpr Color compact = token("gray100", "#f2f3f5");
constexpr Color red = token("red", "#db303d");

struct CubeColors {
    Color top;
    Color left;
    Color right;
    Color edge;
};

/// In the order of the roles.
constexpr std::array<CubeColors, zolVoxelColors.size()> cubeColors { {
    { mid, ink, mid, white },
    { divider, mid, mid, white },
    { white, divider, compact, mid },
    { red, red, red, white },
} };

/// Black alone: how strong each role is, and each face of it.
constexpr std::array<double, zolVoxelColors.size()> monoStrength { 1.0, 0.7, 0.16, 1.0 };
constexpr Color black { 0, 0, 0, 1 };
constexpr double monoTop = 0.45;
constexpr double monoLeft = 1.0;
constexpr double monoRight = 0.7;

CubeColors colorsOf(ZOLVoxelColor color, bool mono, double alpha)
{
    const auto role = static_cast<std::size_t>(color);
    if (mono) {
        const double strength = monoStrength[role] * alpha;
        return { black.faded(strength * monoTop), black.faded(strength * monoLeft),
            black.faded(strength * monoRight), {} };
    }
    const CubeColors& solid = cubeColors[role];
    return { solid.top.faded(alpha), solid.left.faded(alpha), solid.right.faded(alpha),
        solid.edge.faded(alpha * strokeAlpha) };
}

/// Wide enough for any sum of coordinates.
std::int64_t across(const ZOLVoxel& voxel) { return std::int64_t { voxel.x } + voxel.y; }
std::int64_t depth(const ZOLVoxel& voxel) { return across(voxel) + voxel.z; }

/// The displacement of a cube that is on its way.
struct Flight {
    double dx = 0;
    double dy = 0;
    double alpha = 1;
};

Flight flight(double p, std::size_t index, ScenePoint home, ScenePoint center, double unit)
{
    const double ddx = (home.x - center.x) * 1.1 + rnd(index) * 6 * unit;
    const double ddy = (home.y - center.y) * 0.9 - unit * 3.5 + rnd(index * 7) * 4 * unit;
    return { ddx * p, ddy * p, 1 - p };
}

void addShadow(std::vector<Quad>& quads, std::span<const ZOLVoxel> voxels, const Projection& floor)
{
    std::set<std::pair<int, int>> columns;
    for (const ZOLVoxel& voxel : voxels) {
        if (!columns.emplace(voxel.x, voxel.y).second)
            continue;
        const double x = voxel.x + shadowInset;
        const double y = voxel.y + shadowInset;
        quads.push_back(
            { { floor.point(x, y, 0), floor.point(x + shadowSide, y, 0),
                  floor.point(x + shadowSide, y + shadowSide, 0), floor.point(x, y + shadowSide, 0) },
                divider });
    }
}

void addCube(std::vector<Quad>& quads, const ZOLVoxel& voxel, const Projection& at, const CubeColors& colors,
    double stroke)
{
    const double x = voxel.x;
    const double y = voxel.y;
    const double z = voxel.z;
    const ScenePoint rear = at.point(x, y, z + 1);
    const ScenePoint right = at.point(x + 1, y, z + 1);
    const ScenePoint front = at.point(x + 1, y + 1, z + 1);
    const ScenePoint left = at.point(x, y + 1, z + 1);
    const ScenePoint frontFoot = at.point(x + 1, y + 1, z);
    quads.push_back({ { rear, right, front, left }, colors.top, colors.edge, stroke });
    quads.push_back({ { left, front, frontFoot, at.point(x, y + 1, z) }, colors.left, colors.edge, stroke });
    quads.push_back(
        { { right, front, frontFoot, at.point(x + 1, y, z) }, colors.right, colors.edge, stroke });
}

} // namespace

std::vector<ZOLVoxel> sorted(std::span<const ZOLVoxel> voxels)
{
    std::vector<ZOLVoxel> list;
    list.reserve(voxels.size());
    std::set<std::tuple<int, int, int>> taken;
    for (const ZOLVoxel& voxel : voxels)
        if (taken.emplace(voxel.x, voxel.y, voxel.z).second)
            list.push_back(voxel);
    std::ranges::stable_sort(
        list, {}, [](const ZOLVoxel& v) { return std::tuple(depth(v), across(v), v.z); });
    return list;
}

SceneRect unitBounds(std::span<const ZOLVoxel> voxels)
{
    if (voxels.empty())
        return { -1, -1, 2, 2 };
    constexpr Projection unit;
    const ZOLVoxel& first = voxels.front();
    const ScenePoint start = unit.point(first.x, first.y, 0);
    double left = start.x;
    double right = start.x;
    double top = start.y;
    double bottom = start.y;
    const auto take = [&](const ScenePoint& at) {
        left = std::min(left, at.x);
        right = std::max(right, at.x);
        top = std::min(top, at.y);
        bottom = std::max(bottom, at.y);
    };
    for (const ZOLVoxel& voxel : voxels) {
        const double x = voxel.x;
        const double y = voxel.y;
        const double z = voxel.z;
        for (const double height : { z + 1, z, 0.0 })
            for (const auto& [dx, dy] : { std::pair { 0, 0 }, { 1, 0 }, { 1, 1 }, { 0, 1 } })
                // The rear lower corner is the one that no face has.
                if (height != z || dx + dy > 0 || z == 0)
                    take(unit.point(x + dx, y + dy, height));
    }
    return { left, top, right - left, bottom - top };
}

std::vector<Quad> scene(std::span<const ZOLVoxel> voxels, const SceneRect& rect, const Look& look)
{
    std::vector<Quad> quads;
    const SceneRect b = unitBounds(voxels);
    const double u = std::min(rect.width / (b.width + 2 * look.pad), rect.height / (b.height + 2 * look.pad));
    if (!(u > 0))
        return quads;
    const double lift = ZOLVoxelMotion::hoverLift * cubicOut(look.lift);
    const Projection home { u, rect.midX() - b.midX() * u, rect.midY() - b.midY() * u - lift };
    const ScenePoint center { rect.midX(), rect.midY() };
    quads.reserve(voxels.size() * 4);
    if (look.shadow && !look.mono)
        addShadow(quads, voxels, { u, home.ox, home.oy + lift });
    std::int64_t lo = 0;
    std::int64_t hi = 0;
    if (!voxels.empty()) {
        const auto [least, most] = std::ranges::minmax(voxels, {}, across);
        lo = across(least);
        hi = across(most);
    }
    const double stroke = !look.mono && u >= smallestOutlined ? u * strokeShare : 0;
    for (std::size_t i = 0; i < voxels.size(); ++i) {
        const ZOLVoxel& voxel = voxels[i];
        double dx = 0;
        if (look.hover != 0 && lo < hi) {
            const double t = static_cast<double>(across(voxel) - lo) / static_cast<double>(hi - lo) * 2 - 1;
            dx = look.hover * t * parallaxMax;
        }
        Flight away;
        if (const double p = i < look.progress.size() ? look.progress[i] : 0; p > 0)
            away = flight(p, i, home.point(voxel.x, voxel.y, voxel.z), center, u);
        addCube(quads, voxel, { u, home.ox + dx + away.dx, home.oy + away.dy },
            colorsOf(voxel.c, look.mono, away.alpha), stroke);
    }
    return quads;
}

std::vector<double> bands(std::span<const ZOLVoxel> voxels)
{
    std::vector<double> list;
    if (voxels.empty())
        return list;
    const auto [least, most] = std::ranges::minmax(voxels, {}, depth);
    const std::int64_t lo = depth(least);
    const std::int64_t levels = depth(most) - lo + 1;
    const auto steps = static_cast<double>(
        std::clamp<std::int64_t>(levels, ZOLVoxelMotion::steps.min, ZOLVoxelMotion::steps.max));
    list.reserve(voxels.size());
    for (const ZOLVoxel& voxel : voxels) {
        const auto along = static_cast<double>(depth(voxel) - lo) / static_cast<double>(levels);
        list.push_back(std::trunc(along * steps) / (steps - 1));
    }
    return list;
}

double rnd(std::size_t index)
{
    // A small congruence generator. Reduced first, so that no index overflows.
    constexpr std::uint64_t modulus = 233280;
    const std::uint64_t seed = std::uint64_t { index } % modulus + 1;
    return static_cast<double>((seed * 9301 + 49297) % modulus) / static_cast<double>(modulus) - 0.5;
}

} // namespace ostrel::VoxelScene
