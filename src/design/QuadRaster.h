// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/Quad.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ostrel {

/// A picture that is painted on: rows of premultiplied 0xAARRGGBB from the top.
struct PixelBuffer {
    std::uint32_t* pixels = nullptr;
    int width = 0;
    int height = 0;
    std::ptrdiff_t stride = 0; ///< pixels from one row to the next
};

/// Paints convex polygons with exact area coverage. The toolkit's painter hands each translucent outline to
/// its thread pool, and takes more than ten times as long for a figure of two hundred cubes. Not for use by
/// two threads at once.
class QuadRaster {
public:
    /// How far an outline goes beyond its quad's corners at most, in widths of the line: blunt ones have a
    /// point.
    static constexpr double outlineReach = 0.58;

    /// Paints the quads in order, all of them behind what the picture has already. A point p of a quad lies
    /// at (p - origin) * scale in pixels. What lies outside the picture is cut off; a quad with a corner a
    /// hundred thousand pixels away, or one that isn't a number, is passed over.
    void paint(const PixelBuffer& target, std::span<const Quad> quads, double scale, ScenePoint origin);

private:
    struct Bounds;
    /// Whether nothing painted there can show any more.
    [[nodiscard]] static bool opaque(const PixelBuffer& target, const Bounds& bounds);
    using Corners = std::span<const ScenePoint>;

    void paint(const PixelBuffer& target, const Bounds& bounds, const Quad& quad,
        const std::array<ScenePoint, 4>& corners, double half);
    /// Adds what the closed polygon covers, with that sign, to the running sums.
    void accumulate(std::vector<float>& sums, const Bounds& bounds, Corners polygon, float sign);
    void accumulateEdge(
        std::vector<float>& sums, const Bounds& bounds, ScenePoint from, ScenePoint to, float sign);
    /// Notes that the row has sums from `low` to before `high`.
    void touch(int row, int low, int high, int width);
    void blend(const PixelBuffer& target, const Bounds& bounds, const Quad& quad);

    std::vector<float> fill_;
    std::vector<float> stroke_;
    std::vector<int> first_; ///< of each row, the columns that hold sums
    std::vector<int> last_;
};

} // namespace ostrel
