// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace ostrel {

/// What a cube is in its figure. How each looks is the scene's business.
enum class ZOLVoxelColor { ink, mid, light, red };

inline constexpr std::array zolVoxelColors { ZOLVoxelColor::ink, ZOLVoxelColor::mid, ZOLVoxelColor::light,
    ZOLVoxelColor::red };

[[nodiscard]] std::string_view rawValue(ZOLVoxelColor color);

/// A place in the grid: the unit cube from (x, y, z) to (x+1, y+1, z+1). x and y run across the floor, z
/// upward.
struct ZOLVoxelCell {
    int x = 0;
    int y = 0;
    int z = 0;

    bool operator==(const ZOLVoxelCell&) const = default;
};

/// A filled place.
struct ZOLVoxel {
    int x = 0;
    int y = 0;
    int z = 0;
    ZOLVoxelColor c = ZOLVoxelColor::ink;

    [[nodiscard]] ZOLVoxelCell cell() const { return { x, y, z }; }
    bool operator==(const ZOLVoxel&) const = default;
};

/// The cells take the colour for `hold` seconds, then go back.
struct ZOLVoxelFlash {
    std::vector<ZOLVoxelCell> cells;
    ZOLVoxelColor color = ZOLVoxelColor::red;
    double hold = 0;
};

/// The figure is reflected on the axis "x", "y", or z for any other text.
struct ZOLVoxelMirror {
    std::string axis;
};

/// One marked cell walks through the listed ones, a step for each click.
struct ZOLVoxelCycle {
    std::vector<ZOLVoxelCell> cells;
    ZOLVoxelColor color = ZOLVoxelColor::red;
};

/// What a click does to a figure.
using ZOLVoxelGesture = std::variant<ZOLVoxelFlash, ZOLVoxelMirror, ZOLVoxelCycle>;

/// A figure of unit cubes.
struct ZOLVoxelModel {
    std::string name; ///< what it is looked up by
    std::string label; ///< what a person reads
    std::string note; ///< one line on what it shows
    std::vector<ZOLVoxel> voxels;
    std::optional<ZOLVoxelGesture> gesture; ///< without one, a click hands the one red mark on

    [[nodiscard]] std::size_t count() const { return voxels.size(); }
    /// The places of the red voxels, in the list's order.
    [[nodiscard]] std::vector<ZOLVoxelCell> signals() const;
};

} // namespace ostrel
