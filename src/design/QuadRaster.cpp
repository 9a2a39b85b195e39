// SPDX-License-Identifier: Apache-2.0
#include "design/QuadRaster.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <optional>

namespace ostrel {

namespace {

/// In pixels. What is farther out is a fault of its maker's, and single precision can't place it.
constexpr double farthest = 1e5;

/// A round join is drawn with this many corners where it turns much.
constexpr std::size_t joinCorners = 3;

/// Above this cosine of the angle between two normals a join is drawn with one corner. At the obtuse corners
/// of a figure's faces that adds less than a fiftieth of the line's width squared, which no pixel shows.
constexpr double bluntest = 0.49;

/// Rounds what isn't negative, where the library's function would be a call for each pixel.
constexpr float rounding = 0.5F;

/// Pixels from here on are opaque.
constexpr std::uint32_t opaqueBlack = 0xff000000U;

/// Four cells or pixels at once, as one register of any processor of today holds them.
constexpr int lanes = 4;
using FourFloats = float __attribute__((vector_size(16)));
using FourPixels = std::uint32_t __attribute__((vector_size(16)));
/// The same bits, two channels of each pixel with room for a product of two bytes.
using EightChannels = std::uint16_t __attribute__((vector_size(16)));

constexpr std::uint32_t twoChannels = 0x00ff00ffU;

template <typename Four, typename Element>
Four loaded(const Element* from)
{
    Four four;
    std::memcpy(&four, from, sizeof four);
    return four;
}

bool any(const FourPixels& four)
{
    std::array<std::uint64_t, 2> halves;
    std::memcpy(halves.data(), &four, sizeof halves);
    return (halves[0] | halves[1]) != 0;
}

/// A colour as the blending takes it: premultiplied by its own alpha, each channel from 0 to 255.
struct Ink {
    EightChannels redBlue; ///< 0x00RR00BB for each pixel
    EightChannels alphaGreen; ///< 0x00AA00GG
    float alpha; ///< from 0 to 255

    explicit Ink(const Color& color)
        : alpha(static_cast<float>(std::clamp(color.alpha, 0.0, 1.0) * 255))
    {
        const auto byte = [](double value) {
            return static_cast<std::uint32_t>(std::clamp(value, 0.0, 1.0) * 255 + rounding);
        };
        const auto everywhere
            = [](std::uint32_t pair) { return reinterpret_cast<EightChannels>(FourPixels {} + pair); };
        redBlue = everywhere((byte(color.red) << 16U) | byte(color.blue));
        alphaGreen = everywhere((0xffU << 16U) | byte(color.green));
    }
};

/// Each divided by 255 and rounded.
EightChannels divided(EightChannels product)
{
    product += 128;
    return (product + (product >> 8)) >> 8;
}

/// How strongly an ink that covers so much of each pixel colours it, from 0 to 255.
FourPixels strengths(const Ink& ink, FourFloats coverage)
{
    const FourFloats size = coverage < 0 ? -coverage : coverage;
    const FourFloats most = FourFloats {} + 1;
    const FourFloats share = size < most ? size : most;
    return reinterpret_cast<FourPixels>(
        __builtin_convertvector(share * ink.alpha + rounding, std::int32_t __attribute__((vector_size(16)))));
}

/// The ink laid behind what each pixel has already.
[[gnu::always_inline]] inline FourPixels under(
    const FourPixels& pixels, const Ink& ink, const FourPixels& strength)
{
    const FourPixels redBlue = pixels & twoChannels;
    const FourPixels alphaGreen = (pixels >> 8) & twoChannels;
    const auto twice
        = [](const FourPixels& four) { return reinterpret_cast<EightChannels>(four | (four << 16)); };
    const EightChannels share = divided((255 - twice(alphaGreen >> 16)) * twice(strength));
    const auto mixed = [&](const FourPixels& before, EightChannels channels) {
        return before + reinterpret_cast<FourPixels>(divided(channels * share));
    };
    return (mixed(alphaGreen, ink.alphaGreen) << 8) | mixed(redBlue, ink.redBlue);
}

/// The changes of coverage from one cell to the next, summed up: what each of them is covered.
FourFloats summed(FourFloats changes, float before)
{
    const FourFloats none {};
    changes += __builtin_shufflevector(none, changes, 0, 4, 5, 6);
    changes += __builtin_shufflevector(none, changes, 0, 1, 4, 5);
    return changes + before;
}

/// The next whole number of one that isn't negative. The library's function is a call on this processor.
template <typename Real>
constexpr int roundedUp(Real value)
{
    const int below = static_cast<int>(value);
    return below + (static_cast<Real>(below) < value ? 1 : 0);
}

#if defined(__x86_64__) && !defined(__clang__)
/// Compiled twice, since processors of the last ten years take a tenth less time with their newer
/// instructions.
#define OSTREL_FOR_NEW_PROCESSORS [[gnu::target_clones("arch=x86-64-v3", "default")]]
#else
#define OSTREL_FOR_NEW_PROCESSORS
#endif

#if defined(__x86_64__)
[[gnu::target("avx")]] void releaseUpperHalves() { __builtin_ia32_vzeroupper(); }

/// The toolkit's painting may leave the upper halves of the vector registers in use. Until they are released
/// each floating-point instruction waits for the one before, and a frame takes almost twice as long.
void releaseVectorRegisters()
{
    if (__builtin_cpu_supports("avx"))
        releaseUpperHalves();
}
#else
void releaseVectorRegisters() { }
#endif

double doubledArea(std::span<const ScenePoint> polygon)
{
    double sum = 0;
    for (std::size_t at = 0; at < polygon.size(); ++at) {
        const ScenePoint a = polygon[at];
        const ScenePoint b = polygon[(at + 1) % polygon.size()];
        sum += a.x * b.y - a.y * b.x;
    }
    return sum;
}

/// Without the care that the library's function takes with numbers near a double's limits.
double lengthOf(double x, double y) { return std::sqrt(x * x + y * y); }

/// The two borders of a closed outline: `half` of its width to either side, the outer one with round joins.
struct Outline {
    std::array<ScenePoint, 4 * joinCorners> outer;
    std::size_t outerCorners = 0;
    std::array<ScenePoint, 4> inner;

    void add(ScenePoint corner) { outer[outerCorners++] = corner; }
    [[nodiscard]] std::span<const ScenePoint> outerBorder() const { return { outer.data(), outerCorners }; }
};

Outline outlined(const std::array<ScenePoint, 4>& corners, double half)
{
    // Outward normals, whichever way the polygon turns.
    const double turn = doubledArea(corners) > 0 ? 1 : -1;
    std::array<ScenePoint, 4> normals;
    for (std::size_t at = 0; at < 4; ++at) {
        const ScenePoint a = corners[at];
        const ScenePoint b = corners[(at + 1) % 4];
        const double length = lengthOf(b.x - a.x, b.y - a.y);
        normals[at] = length > 0 ? ScenePoint { (b.y - a.y) / length * turn, (a.x - b.x) / length * turn }
                                 : ScenePoint {};
    }
    Outline outline;
    for (std::size_t at = 0; at < 4; ++at) {
        const ScenePoint corner = corners[at];
        const ScenePoint before = normals[(at + 3) % 4];
        const ScenePoint after = normals[at];
        const ScenePoint middle { before.x + after.x, before.y + after.y };
        // Where the two inner borders meet.
        const double facing = 1 + before.x * after.x + before.y * after.y;
        const double depth = facing > 0.01 ? half / facing : 0;
        outline.inner[at] = { corner.x - middle.x * depth, corner.y - middle.y * depth };
        if (facing > 1 + bluntest) {
            outline.add({ corner.x + middle.x * depth, corner.y + middle.y * depth });
            continue;
        }
        const double length = lengthOf(middle.x, middle.y);
        const double reach = length > 0 ? half / length : 0;
        outline.add({ corner.x + before.x * half, corner.y + before.y * half });
        outline.add({ corner.x + middle.x * reach, corner.y + middle.y * reach });
        outline.add({ corner.x + after.x * half, corner.y + after.y * half });
    }
    return outline;
}

} // namespace

/// The part of the picture that one quad may touch, in whole pixels.
struct QuadRaster::Bounds {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;

    /// Absent where the quad touches nothing of the picture, or is no shape.
    static std::optional<Bounds> of(
        const std::array<ScenePoint, 4>& corners, double reach, const PixelBuffer& target)
    {
        const bool near = std::ranges::all_of(
            corners, [](ScenePoint at) { return std::abs(at.x) <= farthest && std::abs(at.y) <= farthest; });
        if (!near || reach > farthest)
            return std::nullopt;
        const auto [left, right] = std::ranges::minmax(corners, {}, &ScenePoint::x);
        const auto [top, bottom] = std::ranges::minmax(corners, {}, &ScenePoint::y);
        const auto within = [](double value, int limit) {
            return static_cast<int>(std::clamp(value, 0.0, static_cast<double>(limit)));
        };
        Bounds bounds { .left = within(std::floor(left.x - reach), target.width),
            .top = within(std::floor(top.y - reach), target.height) };
        bounds.width = within(std::ceil(right.x + reach), target.width) - bounds.left;
        bounds.height = within(std::ceil(bottom.y + reach), target.height) - bounds.top;
        if (bounds.width <= 0 || bounds.height <= 0)
            return std::nullopt;
        return bounds;
    }

    /// Sums of a row: one a column, one for what ends at the right edge, and to spare what is read at once.
    [[nodiscard]] int stride() const { return width + 1 + lanes; }
};

bool QuadRaster::opaque(const PixelBuffer& target, const Bounds& bounds)
{
    for (int row = 0; row < bounds.height; ++row) {
        const std::uint32_t* const pixels = target.pixels + (bounds.top + row) * target.stride + bounds.left;
        std::uint32_t all = opaqueBlack;
        for (int cell = 0; cell < bounds.width; ++cell)
            all &= pixels[cell];
        if (all < opaqueBlack)
            return false;
    }
    return true;
}

void QuadRaster::paint(
    const PixelBuffer& target, std::span<const Quad> quads, double scale, ScenePoint origin)
{
    releaseVectorRegisters();
    // From the front to the rear: what nearer quads hide for good isn't worked out at all.
    for (std::size_t remaining = quads.size(); remaining > 0; --remaining) {
        const Quad& quad = quads[remaining - 1];
        std::array<ScenePoint, 4> corners;
        std::ranges::transform(quad.corners, corners.begin(), [&](ScenePoint at) {
            return ScenePoint { (at.x - origin.x) * scale, (at.y - origin.y) * scale };
        });
        const double half = quad.strokeWidth > 0 ? quad.strokeWidth * scale / 2 : 0;
        const auto bounds = Bounds::of(corners, 2 * half * outlineReach, target);
        if (bounds && !opaque(target, *bounds))
            paint(target, *bounds, quad, corners, half);
    }
}

void QuadRaster::paint(const PixelBuffer& target, const Bounds& bounds, const Quad& quad,
    const std::array<ScenePoint, 4>& corners, double half)
{
    const auto rows = static_cast<std::size_t>(bounds.height);
    const std::size_t cells = rows * static_cast<std::size_t>(bounds.stride());
    fill_.assign(cells, 0);
    stroke_.assign(cells, 0);
    first_.assign(rows, bounds.width);
    last_.assign(rows, 0);
    accumulate(fill_, bounds, corners, 1);
    if (half > 0) {
        const Outline outline = outlined(corners, half);
        accumulate(stroke_, bounds, outline.outerBorder(), 1);
        accumulate(stroke_, bounds, outline.inner, -1);
    }
    blend(target, bounds, quad);
}

void QuadRaster::accumulate(std::vector<float>& sums, const Bounds& bounds, Corners polygon, float sign)
{
    // Polygons of either turn add the same way.
    const float turned = doubledArea(polygon) > 0 ? sign : -sign;
    for (std::size_t at = 0; at < polygon.size(); ++at)
        accumulateEdge(sums, bounds, polygon[at], polygon[(at + 1) % polygon.size()], turned);
}

[[gnu::always_inline]] inline void QuadRaster::touch(int row, int low, int high, int width)
{
    const auto at = static_cast<std::size_t>(row);
    first_[at] = std::min(first_[at], low);
    last_[at] = std::max(last_[at], std::min(width, high));
}

/// Each cell gets the change of coverage that the edge brings from the column before it, so that the running
/// sum along a row is the coverage itself.
OSTREL_FOR_NEW_PROCESSORS void QuadRaster::accumulateEdge(
    std::vector<float>& sums, const Bounds& bounds, ScenePoint from, ScenePoint to, float sign)
{
    if (from.y == to.y)
        return;
    if (from.y > to.y) {
        std::swap(from, to);
        sign = -sign;
    }
    // Places within the bounds are small: single precision is a ten-thousandth of a pixel.
    const auto slope = static_cast<float>((to.x - from.x) / (to.y - from.y));
    const auto startX = static_cast<float>(from.x - bounds.left);
    const auto startY = static_cast<float>(from.y - bounds.top);
    const auto limit = static_cast<float>(bounds.height);
    const auto rightmost = static_cast<float>(bounds.width);
    const float endY = std::min(static_cast<float>(to.y - bounds.top), limit);
    float y = std::max(startY, 0.0F);
    if (y >= endY)
        return;
    const auto column = [&](float at) { return std::clamp(startX + (at - startY) * slope, 0.0F, rightmost); };
    float x = column(y);
    if (from.x == to.x) {
        // Two of four edges of most faces: the same two cells in each row.
        const auto cell = static_cast<int>(x);
        const float right = x - static_cast<float>(cell);
        for (int row = static_cast<int>(y); y < endY; ++row) {
            const float rowEnd = std::min(static_cast<float>(row + 1), endY);
            const float high = (rowEnd - y) * sign;
            touch(row, cell, cell + 1, bounds.width);
            float* const cells = sums.data() + static_cast<std::ptrdiff_t>(row) * bounds.stride() + cell;
            cells[0] += high * (1 - right);
            cells[1] += high * right;
            y = rowEnd;
        }
        return;
    }
    for (int row = static_cast<int>(y); y < endY; ++row) {
        const float rowEnd = std::min(static_cast<float>(row + 1), endY);
        const float next = column(rowEnd);
        const float high = (rowEnd - y) * sign;
        const float low = std::min(x, next);
        const float wide = std::max(x, next);
        const int lowCell = static_cast<int>(low);
        const int highCell = roundedUp(wide);
        touch(row, lowCell, std::max(highCell, lowCell + 1), bounds.width);
        float* const cells = sums.data() + static_cast<std::ptrdiff_t>(row) * bounds.stride();
        if (highCell <= lowCell + 1) {
            const float right = (x + next) / 2 - static_cast<float>(lowCell);
            cells[lowCell] += high * (1 - right);
            cells[lowCell + 1] += high * right;
        } else {
            // The edge crosses several columns: trapezoids between two triangles.
            const float perCell = 1 / (wide - low);
            const float lead = 1 - (low - static_cast<float>(lowCell));
            const float trail = wide - static_cast<float>(highCell) + 1;
            const float leading = lead * lead * perCell / 2;
            const float trailing = trail * trail * perCell / 2;
            cells[lowCell] += high * leading;
            if (highCell == lowCell + 2) {
                cells[lowCell + 1] += high * (1 - leading - trailing);
            } else {
                const float second = (lead + 0.5F) * perCell;
                cells[lowCell + 1] += high * (second - leading);
                for (int cell = lowCell + 2; cell < highCell - 1; ++cell)
                    cells[cell] += high * perCell;
                const float reached = second + static_cast<float>(highCell - lowCell - 3) * perCell;
                cells[highCell - 1] += high * (1 - reached - trailing);
            }
            cells[highCell] += high * trailing;
        }
        x = next;
        y = rowEnd;
    }
}

OSTREL_FOR_NEW_PROCESSORS void QuadRaster::blend(
    const PixelBuffer& target, const Bounds& bounds, const Quad& quad)
{
    const Ink fill(quad.fill);
    const Ink stroke(quad.stroke);
    for (int row = 0; row < bounds.height; ++row) {
        const auto at = static_cast<std::size_t>(row);
        const std::ptrdiff_t start = static_cast<std::ptrdiff_t>(row) * bounds.stride();
        const float* const fillCells = fill_.data() + start;
        const float* const strokeCells = stroke_.data() + start;
        std::uint32_t* const pixels = target.pixels + (bounds.top + row) * target.stride + bounds.left;
        float filled = 0;
        float stroked = 0;
        for (int cell = first_[at]; cell < last_[at]; cell += lanes) {
            const FourFloats fillCover = summed(loaded<FourFloats>(fillCells + cell), filled);
            const FourFloats strokeCover = summed(loaded<FourFloats>(strokeCells + cell), stroked);
            filled = fillCover[lanes - 1];
            stroked = strokeCover[lanes - 1];
            // Beyond its last cell a quad covers nothing, so only the picture's edge cuts a group short.
            const int count = std::min(lanes, target.width - bounds.left - cell);
            FourPixels four {};
            if (count == lanes)
                four = loaded<FourPixels>(pixels + cell);
            else
                for (int lane = 0; lane < count; ++lane)
                    four[lane] = pixels[cell + lane];
            if (!any(~four & opaqueBlack))
                continue;
            // Both without a look whether it is needed, which the processor would guess wrong at every edge.
            four = under(four, stroke, strengths(stroke, strokeCover));
            four = under(four, fill, strengths(fill, fillCover));
            if (count == lanes)
                std::memcpy(pixels + cell, &four, sizeof four);
            else
                for (int lane = 0; lane < count; ++lane)
                    pixels[cell + lane] = four[lane];
        }
    }
}

} // namespace ostrel
