// SPDX-License-Identifier: Apache-2.0
#include "design/voxel/AutomationVoxelView.h"

#include "design/Accessibility.h"
#include "design/Appearance.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "design/Utf8.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

namespace ostrel {

AutomationVoxelView::AutomationVoxelView(
    AutomationVoxelFamily family, AutomationVoxelState state, double size)
    : family_(family)
    , state_(state)
    , unit_(std::max(2.0, size / 6))
{
    const int side = static_cast<int>(std::ceil(size));
    setFixedSize(side, side);
    setAccessibleRole(*this, QAccessible::Graphic);
    const std::string_view label = AutomationBadge::label(family);
    const std::string_view word = AutomationBadge::word(state);
    setAccessibleName(utf16(fmt::format("{} automation, {}", label, word)));
    setToolTip(utf16(fmt::format("{} · {}", label, word)));
}

void AutomationVoxelView::paintEvent(QPaintEvent*)
{
    const auto mode = appearanceOf(*this);
    const AutomationBadge::Colors colors { AutomationBadge::body(state_).in(mode),
        AutomationBadge::signal(state_).in(mode), OstrelStyle::bg.in(mode) };
    QPainter painter(this);
    drawQuads(
        painter, AutomationBadge::scene(family_, { 0, 0, width() + 0.0, height() + 0.0 }, unit_, colors));
}

} // namespace ostrel
