// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/Quad.h"
#include "design/voxel/ZOLVoxelModel.h"

#include <cstddef>
#include <span>
#include <vector>

/// A figure of cubes as polygons. Nothing here but numbers. Coordinates may be any integers.
namespace ostrel::VoxelScene {

/// How far the floor is flattened: one step across it goes half a step down the screen, a little less.
inline constexpr double flattening = 0.48;
/// How far the nearest and the farthest cubes move with the pointer, in points.
inline constexpr double parallaxMax = 2;
/// Cells with an edge below this, in points, have no outline.
inline constexpr double smallestOutlined = 4;

/// A figure's place on screen: the edge of a cell and the point where (0, 0, 0) lies.
struct Projection {
    double unit = 1;
    double ox = 0;
    double oy = 0;

    [[nodiscard]] ScenePoint point(double x, double y, double z) const
    {
        return { ox + (x - y) * unit, oy + ((x + y) * flattening - z) * unit };
    }
};

/// How a figure is drawn.
struct Look {
    double pad = 1; ///< around the figure, in cells
    bool shadow = true;
    bool mono = false; ///< black alone, in three strengths
    double hover = 0; ///< the pointer's place across the view, -1 to 1
    double lift = 0; ///< how far the figure has risen, 0 to 1
    std::span<const double> progress {}; ///< of each cube: 0 at home, 1 fully away; home past the list's end
};

/// The voxels in drawing order, the rear ones first. Of several in one cell the first stays.
[[nodiscard]] std::vector<ZOLVoxel> sorted(std::span<const ZOLVoxel> voxels);

/// The figure's box with cells of one point at (0, 0, 0), its columns down to the floor included.
[[nodiscard]] SceneRect unitBounds(std::span<const ZOLVoxel> voxels);

/// The polygons of a figure as large as fits into the rectangle, in drawing order: the shadow's squares, then
/// three faces of each voxel in the list's order. None where nothing fits.
[[nodiscard]] std::vector<Quad> scene(
    std::span<const ZOLVoxel> voxels, const SceneRect& rect, const Look& look);

/// How far along the line of sight each cube lies, 0 (rear) to 1, in six to eight steps.
[[nodiscard]] std::vector<double> bands(std::span<const ZOLVoxel> voxels);

/// A fixed noise in [-0.5, 0.5) for each index.
[[nodiscard]] double rnd(std::size_t index);

[[nodiscard]] constexpr double cubicOut(double t) { return 1 - (1 - t) * (1 - t) * (1 - t); }
[[nodiscard]] constexpr double cubicIn(double t) { return t * t * t; }

} // namespace ostrel::VoxelScene
