// SPDX-License-Identifier: Apache-2.0
#include "history/HistoryGraph.h"

#include "core/Text.h"
#include "history/Thinning.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include <fmt/format.h>

namespace ostrel::HistoryGraph {

namespace {

/// Of the height: where 0 % lies, and how far above it 100 %.
constexpr double floorShare = 0.9;
constexpr double risingShare = 0.8;

double drawn(double value)
{
    // Not a number is below everything.
    return value > 0 ? std::min(value, 100.0) : 0.0;
}

double span(std::size_t count) { return static_cast<double>(std::max(shortestSpan, count)); }

} // namespace

double xOf(std::size_t index, std::size_t count, double width)
{
    const double steps = span(count);
    return (static_cast<double>(index) + steps - static_cast<double>(count)) * width / (steps - 1);
}

double yOf(double value, double height) { return height * (floorShare - risingShare * drawn(value) / 100); }

std::vector<Point> line(std::span<const double> samples, double width, double height)
{
    std::vector<double> values;
    values.reserve(samples.size());
    std::ranges::transform(samples, std::back_inserter(values), drawn);
    const auto indices = worthDrawing(values, width);
    std::vector<Point> points;
    points.reserve(indices.size());
    for (const std::size_t index : indices)
        points.push_back({ xOf(index, samples.size(), width), yOf(values[index], height) });
    return points;
}

std::optional<double> boundaryX(std::optional<std::size_t> boundary, std::size_t count, double width)
{
    if (!boundary || *boundary == 0 || *boundary >= count)
        return std::nullopt;
    return xOf(*boundary, count, width);
}

std::string accessibilityLabel(
    std::string_view caption, std::size_t count, std::optional<std::size_t> boundary)
{
    const std::size_t restored = std::min(boundary.value_or(0), count);
    return fmt::format(
        "{} · {} minutes · {} restored, {} this run", caption, count, restored, count - restored);
}

std::optional<std::size_t> nearest(double x, std::size_t count, double width)
{
    if (count == 0 || !(width > 0))
        return std::nullopt;
    const double steps = span(count);
    const double index = std::round(x * (steps - 1) / width - steps + static_cast<double>(count));
    const auto last = static_cast<double>(count - 1);
    return index > 0 ? static_cast<std::size_t>(std::min(index, last)) : 0;
}

std::string hoverText(std::string_view caption, std::span<const double> samples,
    std::span<const std::int64_t> minutes, double x, double width, const LocalTime& localTime)
{
    const auto index = nearest(x, samples.size(), width);
    if (!index)
        return {};
    std::string text = fmt::format("{} · {}%", caption, rounded(drawn(samples[*index])));
    if (*index < minutes.size())
        if (const auto at = localTime(minutes[*index]))
            text += fmt::format(" · {:02}:{:02}", at->hour, at->minute);
    return text;
}

} // namespace ostrel::HistoryGraph
