// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace ostrel {

/// The panel, in points.
inline constexpr int panelWidth = 760;
inline constexpr int panelHeight = 700;
/// Between its edge and what it holds.
inline constexpr int panelInset = 16;
/// What every tab is built for.
inline constexpr int contentWidth = panelWidth - 2 * panelInset;
inline constexpr int panelCornerRadius = 16;

} // namespace ostrel
