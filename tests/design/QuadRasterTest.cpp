// SPDX-License-Identifier: Apache-2.0
#include "design/QuadRaster.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

constexpr Color white { 1, 1, 1, 1 };
constexpr Color none { 0, 0, 0, 0 };

/// A transparent picture.
struct Picture {
    static constexpr int width = 60;
    static constexpr int height = 50;
    std::vector<std::uint32_t> pixels = std::vector<std::uint32_t>(width * height);

    void paint(const Quad& quad, double scale = 1, ScenePoint origin = {})
    {
        QuadRaster().paint({ pixels.data(), width, height, width }, { &quad, 1 }, scale, origin);
    }
    [[nodiscard]] int alpha(int x, int y) const
    {
        return static_cast<int>(pixels[static_cast<std::size_t>(y * width + x)] >> 24U);
    }
    /// The area that is covered, in pixels.
    [[nodiscard]] double area() const
    {
        double sum = 0;
        for (const std::uint32_t pixel : pixels)
            sum += (pixel >> 24U) / 255.0;
        return sum;
    }
};

constexpr std::array<ScenePoint, 4> rectangle(double x, double y, double width, double height)
{
    return { { { x, y }, { x + width, y }, { x + width, y + height }, { x, y + height } } };
}

TEST(QuadRaster, APixelIsAsStrongAsItIsCovered)
{
    Picture picture;
    picture.paint({ rectangle(3, 2.5, 5.25, 2), white });
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 12; ++x) {
            const double down = y == 3 ? 1 : y == 2 || y == 4 ? 0.5 : 0;
            const double across = x >= 3 && x < 8 ? 1 : x == 8 ? 0.25 : 0;
            EXPECT_NEAR(picture.alpha(x, y), 255 * down * across, 1) << x << " " << y;
        }
    // Half white over opaque black.
    Picture mixed;
    const Quad quads[] { { rectangle(0, 0, 10, 10), { 0, 0, 0, 1 } },
        { rectangle(0, 0, 10, 10), { 1, 0.5, 0, 0.5 }, white, 1 } };
    QuadRaster().paint(
        { mixed.pixels.data(), Picture::width, Picture::height, Picture::width }, quads, 1, {});
    EXPECT_EQ(mixed.pixels[Picture::width * 5 + 5], 0xff804000U);
    EXPECT_EQ(mixed.pixels[Picture::width * 5], 0xffc0a080U) << "half of the outline lies over both";
}

/// Areas that geometry gives: a slanted quad's is half its diagonals' cross product, an outline's is its
/// length times its width and a full circle for the joins, less the corners that the inner side doesn't have.
TEST(QuadRaster, CoversTheAreaOfItsShapeWhicheverWayItTurns)
{
    std::array<ScenePoint, 4> corners { { { 30, 5 }, { 52, 15.5 }, { 30, 26 }, { 8, 15.5 } } };
    const double side = std::hypot(22, 10.5);
    for (const double scale : { 1.0, 1.25 }) {
        for (const bool reversed : { false, true }) {
            if (reversed)
                std::swap(corners[1], corners[3]);
            Picture filled;
            filled.paint({ corners, white }, scale, { 8, 5 });
            EXPECT_NEAR(filled.area(), 44.0 * 21 / 2 * scale * scale, 1.5) << scale;
            Picture outlined;
            outlined.paint({ corners, none, white, 2 });
            // Inner corners of the rhombus: tan of half the turning angle, summed over the four.
            const double inner = 2 * (22 / 10.5 + 10.5 / 22);
            EXPECT_NEAR(outlined.area(), 4 * side * 2 + std::numbers::pi - inner, 0.7) << reversed;
        }
    }
    Picture square;
    square.paint({ rectangle(15, 15, 20, 20), none, white, 8 });
    EXPECT_NEAR(square.area(), 80 * 8 + 16 * std::numbers::pi - 64, 6) << "right angles are rounded";
    EXPECT_EQ(square.alpha(11, 11), 0);
    Picture blunt;
    blunt.paint({ { { { 30, 10 }, { 51, 22 }, { 30, 34 }, { 9, 22 } } }, none, white, 8 });
    EXPECT_NEAR(blunt.alpha(30, 5), 80, 30) << "a blunt corner's point goes on beyond half the width";
}

TEST(QuadRaster, WhatLiesOutsideIsCutOffAndWhatIsNoShapeIsPassedOver)
{
    Picture picture;
    picture.paint({ rectangle(-20, -20, 25, 25), white });
    picture.paint({ rectangle(55, 45, 90, 90), white });
    EXPECT_NEAR(picture.area(), 25 + 25, 0.01);
    EXPECT_EQ(picture.alpha(0, 0), 255);
    EXPECT_EQ(picture.alpha(59, 49), 255);
    const double infinite = std::numeric_limits<double>::infinity();
    Picture blank;
    for (const double bad : { infinite, -infinite, std::nan(""), 1e300, -1e9 })
        blank.paint({ rectangle(bad, 0, 10, 10), white, white, 3 });
    blank.paint({ rectangle(5, 5, 0, 0), white });
    blank.paint({ rectangle(5, 5, 0, 9), white });
    blank.paint({ rectangle(-90, 5, 10, 10), white, white, 1 });
    EXPECT_EQ(blank.area(), 0);
    // A shape of no size still has an outline, and a cut one keeps its far side.
    blank.paint({ rectangle(5, 5, 0, 0), white, white, infinite });
    EXPECT_EQ(blank.area(), 0);
    Picture slanted;
    slanted.paint({ { { { -30, 25 }, { 30, -35 }, { 90, 25 }, { 30, 85 } } }, white });
    EXPECT_NEAR(slanted.area(), Picture::width * Picture::height, 0.01);
}

} // namespace
