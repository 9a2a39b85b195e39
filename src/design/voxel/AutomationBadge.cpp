// SPDX-License-Identifier: Apache-2.0
#include "design/voxel/AutomationBadge.h"

#include "design/OstrelStyle.h"
#include "design/voxel/VoxelScene.h"

#include <algorithm>

namespace ostrel::AutomationBadge {

namespace {

constexpr std::array<ZOLVoxelCell, 5> panelCells { { { 0, 0, 0 }, { 1, 0, 0 }, { 0, 1, 0 }, { 1, 1, 0 },
    { 0, 0, 1 } } };
constexpr std::array<ZOLVoxelCell, 3> dotCells { { { 0, 0, 0 }, { 0, 0, 1 }, { 0, 0, 2 } } };
constexpr std::array<ZOLVoxelCell, 4> barCells { { { 0, 0, 0 }, { 1, 0, 0 }, { 2, 0, 0 }, { 2, 0, 1 } } };
constexpr std::array<ZOLVoxelCell, 5> stackCells { { { 0, 0, 0 }, { 1, 0, 0 }, { 0, 0, 1 }, { 1, 0, 1 },
    { 1, 0, 2 } } };
constexpr std::array<ZOLVoxelCell, 5> ringCells { { { 0, 0, 0 }, { 1, 0, 0 }, { 0, 1, 0 }, { 1, 1, 0 },
    { 1, 1, 1 } } };

struct Family {
    std::string_view word;
    std::string_view label;
    std::span<const ZOLVoxelCell> cells;
};

/// In the order of the enumeration.
constexpr std::array<Family, families.size()> familyRows { {
    { "panel", "orca", panelCells },
    { "dot", "codex app", dotCells },
    { "bar", "launchd", barCells },
    { "stack", "systemd", stackCells },
    { "ring", "cloud", ringCells },
} };

struct State {
    std::string_view word;
    ThemedColor body;
    ThemedColor signal;
};

constexpr std::array<State, states.size()> stateRows { {
    { "active", OstrelStyle::ink, OstrelStyle::red },
    { "paused", OstrelStyle::muted, OstrelStyle::soft },
    { "failed", OstrelStyle::ink, OstrelStyle::red },
    { "unobserved", OstrelStyle::soft, OstrelStyle::hair },
} };

constexpr double topTint = 0.28;
constexpr double rightShade = 0.22;
constexpr Color black { 0, 0, 0, 1 };

const Family& row(AutomationVoxelFamily family) { return familyRows[static_cast<std::size_t>(family)]; }
const State& row(AutomationVoxelState state) { return stateRows[static_cast<std::size_t>(state)]; }

void addCell(std::vector<Quad>& quads, ScenePoint p, double u, const Color& color, const Color& ground)
{
    const auto at = [&](double dx, double dy) { return ScenePoint { p.x + dx * u, p.y + dy * u }; };
    constexpr double half = VoxelScene::flattening;
    constexpr double front = 2 * half;
    quads.push_back({ { p, at(1, half), at(0, front), at(-1, half) }, color.blended(topTint, ground) });
    quads.push_back({ { at(-1, half), at(0, front), at(0, front + 1), at(-1, half + 1) }, color });
    quads.push_back({ { at(0, front), at(1, half), at(1, half + 1), at(0, front + 1) },
        color.blended(rightShade, black) });
}

} // namespace

std::string_view rawValue(AutomationVoxelFamily family) { return row(family).word; }

AutomationVoxelFamily named(std::string_view text)
{
    const auto at = std::ranges::find(families, text, rawValue);
    return at == families.end() ? AutomationVoxelFamily::dot : *at;
}

std::string_view label(AutomationVoxelFamily family) { return row(family).label; }

std::span<const ZOLVoxelCell> cells(AutomationVoxelFamily family) { return row(family).cells; }

std::string_view word(AutomationVoxelState state) { return row(state).word; }

ThemedColor body(AutomationVoxelState state) { return row(state).body; }

ThemedColor signal(AutomationVoxelState state) { return row(state).signal; }

std::vector<Quad> scene(
    AutomationVoxelFamily family, const SceneRect& bounds, double unit, const Colors& colors)
{
    const auto list = cells(family);
    const ZOLVoxelCell last = list.back();
    std::vector<ZOLVoxelCell> ordered(list.begin(), list.end());
    std::ranges::stable_sort(ordered, {}, [](const ZOLVoxelCell& cell) { return cell.x + cell.y + cell.z; });
    const VoxelScene::Projection at { unit, bounds.midX(), bounds.midY() - unit * 1.1 };
    std::vector<Quad> quads;
    for (const ZOLVoxelCell& cell : ordered)
        addCell(quads, at.point(cell.x, cell.y, cell.z), unit, cell == last ? colors.signal : colors.body,
            colors.ground);
    return quads;
}

} // namespace ostrel::AutomationBadge
