// SPDX-License-Identifier: Apache-2.0
#include "bar/BarMark.h"

#include "design/Quad.h"
#include "design/ZOLAppMark.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>
#include <vector>

namespace ostrel {

namespace {

/// A mark of fewer pixels a side has no room for its square.
constexpr int smallestSquare = 14;
/// Of each curve; on a bar of 48 pixels they are off by a fortieth of one.
constexpr int curvePieces = 10;

struct Segment {
    ScenePoint from;
    ScenePoint to;
};

ScenePoint pointOn(ScenePoint start, const ZOLAppMarkCommand& curve, double at)
{
    const double rest = 1 - at;
    const auto mixed = [&](double first, double second, double third, double last) {
        return rest * rest * rest * first + 3 * at * rest * (rest * second + at * third)
            + at * at * at * last;
    };
    return { mixed(start.x, curve.x1, curve.x2, curve.x), mixed(start.y, curve.y1, curve.y2, curve.y) };
}

/// The path's lines one after the other, its curves in pieces, in mark units.
std::vector<Segment> flattened(std::span<const ZOLAppMarkCommand> commands)
{
    std::vector<Segment> segments;
    ScenePoint first;
    ScenePoint last;
    const auto draw = [&](ScenePoint to) {
        segments.push_back({ last, to });
        last = to;
    };
    for (const ZOLAppMarkCommand& command : commands) {
        switch (command.kind) {
        case ZOLAppMarkCommand::Kind::move:
            first = last = { command.x, command.y };
            break;
        case ZOLAppMarkCommand::Kind::line:
            draw({ command.x, command.y });
            break;
        case ZOLAppMarkCommand::Kind::curve: {
            const ScenePoint start = last;
            for (int piece = 1; piece <= curvePieces; ++piece)
                draw(pointOn(start, command, static_cast<double>(piece) / curvePieces));
            break;
        }
        case ZOLAppMarkCommand::Kind::close:
            draw(first);
            break;
        }
    }
    return segments;
}

SceneRect boundsOf(std::span<const Segment> segments)
{
    std::vector<ScenePoint> points;
    for (const Segment& segment : segments) {
        points.push_back(segment.from);
        points.push_back(segment.to);
    }
    const auto [left, right] = std::ranges::minmax(points, {}, &ScenePoint::x);
    const auto [top, bottom] = std::ranges::minmax(points, {}, &ScenePoint::y);
    return { left.x, top.y, right.x - left.x, bottom.y - top.y };
}

double distance(ScenePoint point, const Segment& segment)
{
    const double alongX = segment.to.x - segment.from.x;
    const double alongY = segment.to.y - segment.from.y;
    const double x = point.x - segment.from.x;
    const double y = point.y - segment.from.y;
    const double square = alongX * alongX + alongY * alongY;
    const double share = square > 0 ? std::clamp((x * alongX + y * alongY) / square, 0.0, 1.0) : 0;
    return std::hypot(x - share * alongX, y - share * alongY);
}

/// A square of pixels, each of which keeps the most that any of the lines covers of it, from 0 to 1.
class Coverage {
public:
    explicit Coverage(int side)
        : side_(side)
        , cells_(static_cast<std::size_t>(side) * static_cast<std::size_t>(side))
    {
    }

    void stroke(const Segment& segment, double width)
    {
        const double reach = width / 2 + 0.5;
        const auto within = [&](double at) { return std::clamp(static_cast<int>(at), 0, side_); };
        const auto [left, right] = std::minmax(segment.from.x, segment.to.x);
        const auto [top, bottom] = std::minmax(segment.from.y, segment.to.y);
        for (int y = within(top - reach); y < within(bottom + reach + 1); ++y)
            for (int x = within(left - reach); x < within(right + reach + 1); ++x) {
                double& cell = cells_[index(x, y)];
                cell = std::clamp(reach - distance({ x + 0.5, y + 0.5 }, segment), cell, 1.0);
            }
    }

    [[nodiscard]] double at(int x, int y) const { return cells_[index(x, y)]; }

private:
    [[nodiscard]] std::size_t index(int x, int y) const
    {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(side_) + static_cast<std::size_t>(x);
    }

    int side_;
    std::vector<double> cells_;
};

Coverage covered(int side)
{
    const double line = std::max(1.0, std::ceil(ZOLAppMarks::strokeWidth * side / ZOLAppMarks::canvas));
    const bool alone = side < smallestSquare;
    std::vector<Segment> segments = flattened(ZOLAppMarks::glyph(ZOLAppMark::ostrel));
    const std::vector<Segment> square = flattened(ZOLAppMarks::square());
    const SceneRect drawn = boundsOf(alone ? segments : square);
    if (!alone)
        segments.insert(segments.end(), square.begin(), square.end());

    const double margin = alone ? 0 : std::round(drawn.x * side / ZOLAppMarks::canvas - line / 2);
    const double scale = (side - line - 2 * margin) / drawn.height;
    const double middle = side / 2.0;
    const auto placed = [&](ScenePoint at) {
        return ScenePoint { middle + (at.x - drawn.midX()) * scale, middle + (at.y - drawn.midY()) * scale };
    };
    Coverage coverage(side);
    for (const Segment& segment : segments)
        coverage.stroke({ placed(segment.from), placed(segment.to) }, line);
    return coverage;
}

} // namespace

platform::Image barMark(int width, int height, std::uint32_t ink)
{
    constexpr std::uint32_t colors = 0xffffff;
    constexpr double opaque = 0xff;
    if (width <= 0 || height <= 0)
        return {};
    platform::Image image { .width = width, .height = height, .pixels = {} };
    image.pixels.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0);
    const int side = std::min(width, height);
    const int left = (width - side) / 2;
    const int top = (height - side) / 2;
    const Coverage coverage = covered(side);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            const auto alpha = static_cast<std::uint32_t>(std::lround(coverage.at(x, y) * opaque));
            const auto at = static_cast<std::size_t>(top + y) * static_cast<std::size_t>(width)
                + static_cast<std::size_t>(left + x);
            image.pixels[at] = alpha == 0 ? 0 : (alpha << 24U) | (ink & colors);
        }
    return image;
}

} // namespace ostrel
