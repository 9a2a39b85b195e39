// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/Quad.h"
#include "design/ThemedColor.h"
#include "design/voxel/ZOLVoxelModel.h"

#include <array>
#include <span>
#include <string_view>
#include <vector>

namespace ostrel {

/// Which scheduler an automation belongs to; each has a shape of three to five cubes.
enum class AutomationVoxelFamily { panel, dot, bar, stack, ring };

/// What an automation is doing; told by the colours of its badge.
enum class AutomationVoxelState { active, paused, failed, unobserved };

namespace AutomationBadge {

inline constexpr std::array families { AutomationVoxelFamily::panel, AutomationVoxelFamily::dot,
    AutomationVoxelFamily::bar, AutomationVoxelFamily::stack, AutomationVoxelFamily::ring };
inline constexpr std::array states { AutomationVoxelState::active, AutomationVoxelState::paused,
    AutomationVoxelState::failed, AutomationVoxelState::unobserved };

[[nodiscard]] std::string_view rawValue(AutomationVoxelFamily family);
/// The family of that word; `dot` for any other.
[[nodiscard]] AutomationVoxelFamily named(std::string_view text);
/// What a person reads.
[[nodiscard]] std::string_view label(AutomationVoxelFamily family);
/// Its cubes; the last one is the signal.
[[nodiscard]] std::span<const ZOLVoxelCell> cells(AutomationVoxelFamily family);

[[nodiscard]] std::string_view word(AutomationVoxelState state);
[[nodiscard]] ThemedColor body(AutomationVoxelState state);
[[nodiscard]] ThemedColor signal(AutomationVoxelState state);

struct Colors {
    Color body;
    Color signal;
    Color ground; ///< what tops lean towards
};

/// The polygons of a badge in a view of that size, with cells of `unit` points, in drawing order.
[[nodiscard]] std::vector<Quad> scene(
    AutomationVoxelFamily family, const SceneRect& bounds, double unit, const Colors& colors);

} // namespace AutomationBadge

} // namespace ostrel
