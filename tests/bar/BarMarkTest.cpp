// SPDX-License-Identifier: Apache-2.0
#include "bar/BarMark.h"

#include <algorithm>
#include <cstddef>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

class Drawn {
public:
    Drawn(int width, int height)
        : image_(barMark(width, height, 0xff123456))
    {
    }

    /// From 0 to 255; 0 outside.
    [[nodiscard]] int alpha(int x, int y) const
    {
        if (x < 0 || y < 0 || x >= image_.width || y >= image_.height)
            return 0;
        return static_cast<int>(image_.pixels[static_cast<std::size_t>(y * image_.width + x)] >> 24U);
    }
    /// In whole pixels' worth.
    [[nodiscard]] double ink() const
    {
        double sum = 0;
        for (const auto pixel : image_.pixels)
            sum += (pixel >> 24U) / 255.0;
        return sum;
    }
    [[nodiscard]] const platform::Image& image() const { return image_; }

private:
    platform::Image image_;
};

/// Of the square and of the glyph inside it, in mark units of which a whole mark has 48.
constexpr double squareLength = 138.26;
constexpr double glyphLength = 99.18;

TEST(BarMark, LiesOnWholePixelsWithAllItsLines)
{
    struct Case {
        int size;
        int line; ///< pixels
        int margin; ///< pixels outside the square
    };
    for (const auto& [size, line, margin] : { Case { 14, 1, 1 }, { 16, 1, 1 }, { 22, 1, 2 }, { 24, 1, 2 },
             { 32, 2, 2 }, { 44, 2, 4 }, { 48, 2, 4 }, { 64, 3, 5 }, { 128, 6, 10 } }) {
        SCOPED_TRACE(size);
        const Drawn mark(size, size);
        const int middle = size / 2;
        for (int at = 0; at < margin + line; ++at) {
            const int expected = at < margin ? 0 : 255;
            EXPECT_EQ(mark.alpha(at, middle), expected) << at;
            EXPECT_EQ(mark.alpha(size - 1 - at, middle), expected) << at;
            EXPECT_EQ(mark.alpha(middle, at), expected) << at;
            EXPECT_EQ(mark.alpha(middle, size - 1 - at), expected) << at;
        }
        EXPECT_LT(mark.alpha(margin, margin), 40) << "its corners are round";
        for (int y = 0; y < size; ++y)
            for (int x = 0; x < middle; ++x)
                EXPECT_NEAR(mark.alpha(x, y), mark.alpha(size - 1 - x, y), 1);
        const double scale = (size - line - 2 * margin) / 38.0;
        const double all = (squareLength + glyphLength) * scale * line;
        EXPECT_NEAR(mark.ink() / all, 1, 0.05);
    }
}

TEST(BarMark, IsTheGlyphAloneWhereTheSquareHasNoRoom)
{
    for (const int size : { 8, 12, 13 }) {
        SCOPED_TRACE(size);
        const Drawn mark(size, size);
        EXPECT_NEAR(mark.ink() / (glyphLength * (size - 1) / 24.0), 1, 0.1);
        EXPECT_GT(mark.alpha(size / 2, 0), 127) << "as high as there is room";
        EXPECT_GT(mark.alpha(size / 2, size - 1), 127);
    }
    for (const int size : { 1, 2, 3 })
        EXPECT_GT(Drawn(size, size).ink(), 0) << size;
    EXPECT_TRUE(Drawn(0, 22).image().pixels.empty());
    EXPECT_TRUE(Drawn(22, -1).image().pixels.empty());
}

TEST(BarMark, IsInTheMiddleAndHasOneInk)
{
    const Drawn wide(31, 22);
    const Drawn high(22, 31);
    const Drawn square(22, 22);
    for (int y = 0; y < 22; ++y)
        for (int x = -4; x < 26; ++x) {
            EXPECT_EQ(wide.alpha(x + 4, y), square.alpha(x, y));
            EXPECT_EQ(high.alpha(x, y + 4), x < 22 ? square.alpha(x, y) : 0);
        }
    EXPECT_TRUE(std::ranges::all_of(wide.image().pixels,
        [](auto pixel) { return (pixel >> 24U) == 0 ? pixel == 0 : (pixel & 0xffffff) == 0x123456; }));
}

} // namespace
