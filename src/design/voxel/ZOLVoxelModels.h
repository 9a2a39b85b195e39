// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/voxel/ZOLVoxelModel.h"

#include <array>
#include <span>
#include <string_view>

/// The figures of the family: one for each application and one for all of them.
namespace ostrel::ZOLVoxelModels {

inline constexpr std::string_view version = "2026-09-14";
/// Provenance: the digest of all voxels, each as a line "{model}:{x},{y},{z}={colour}", in the order of the
/// models and of their lists.
inline constexpr std::string_view sourceSHA256
    = "6e8f29f354a083fde7448cc3e667438ba64ba9787a0f077476a5d71752837b7d";
/// Cells in each direction.
inline constexpr ZOLVoxelCell grid { 12, 12, 12 };
/// The usual length of a cell's edge in points.
inline constexpr double unit = 10;
/// How a place becomes a point on the screen, for people; u is the edge of a cell.
inline constexpr std::string_view projection = "screen = (ox + (x - y) * u, oy + (x + y) * 0.48 * u - z * u)";

[[nodiscard]] const ZOLVoxelModel& family();
[[nodiscard]] const ZOLVoxelModel& tessit();
[[nodiscard]] const ZOLVoxelModel& vormel();
[[nodiscard]] const ZOLVoxelModel& ostrel();
[[nodiscard]] const ZOLVoxelModel& pellam();
[[nodiscard]] const ZOLVoxelModel& ruvane();

/// All of them, in that order; built on first use. Any thread.
[[nodiscard]] std::span<const ZOLVoxelModel> all();

/// The model of exactly that name; null for any other.
[[nodiscard]] const ZOLVoxelModel* model(std::string_view named);

} // namespace ostrel::ZOLVoxelModels
