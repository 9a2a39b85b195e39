// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/LocalTime.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The line graph of a percentage over minutes: where everything lies, in points with y growing downward,
/// and what it says. Samples are placed one beside the other, the newest at the right edge, so that minutes
/// that are missing close up. A sample beyond 0 to 100 is drawn at the limit, one that isn't a number at 0.
namespace ostrel::HistoryGraph {

inline constexpr double defaultHeight = 76;
/// Fewer samples than this fill only the right part.
inline constexpr std::size_t shortestSpan = 30;

struct Point {
    double x = 0;
    double y = 0;

    bool operator==(const Point&) const = default;
};

/// Turns a minute since 1970 in UTC into the local time of day; nothing for one that the calendar doesn't
/// reach.
using LocalTime = std::function<std::optional<ClockTime>(std::int64_t minute)>;

/// Where a sample of so many stands.
[[nodiscard]] double xOf(std::size_t index, std::size_t count, double width);
[[nodiscard]] double yOf(double value, double height);

/// The line through the samples, oldest first. Of more samples than the width can show it keeps the peaks
/// and the valleys.
[[nodiscard]] std::vector<Point> line(std::span<const double> samples, double width, double height);

/// Where this run begins; nothing when the whole graph, or none of it, is of this run.
[[nodiscard]] std::optional<double> boundaryX(
    std::optional<std::size_t> boundary, std::size_t count, double width);

/// What is read to people who don't see the graph.
[[nodiscard]] std::string accessibilityLabel(
    std::string_view caption, std::size_t count, std::optional<std::size_t> boundary);

/// The sample that stands closest to an x; the one at the end for an x beyond it. Nothing with no samples or
/// no width.
[[nodiscard]] std::optional<std::size_t> nearest(double x, std::size_t count, double width);

/// What the graph says under the pointer: the nearest sample and when that was. Empty where there is none. A
/// sample without a minute goes without its time.
[[nodiscard]] std::string hoverText(std::string_view caption, std::span<const double> samples,
    std::span<const std::int64_t> minutes, double x, double width, const LocalTime& localTime);

} // namespace ostrel::HistoryGraph
