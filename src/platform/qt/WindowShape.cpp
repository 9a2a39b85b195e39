// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/WindowShape.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include <xcb/shape.h>

namespace platform {

namespace {

xcb_rectangle_t stripe(int x, int y, int width, int height)
{
    return { static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), static_cast<std::uint16_t>(width),
        static_cast<std::uint16_t>(height) };
}

void shape(xcb_connection_t* connection, xcb_window_t window, xcb_shape_kind_t kind,
    std::span<const xcb_rectangle_t> stripes)
{
    const auto* extension = xcb_get_extension_data(connection, &xcb_shape_id);
    if (extension && extension->present)
        xcb_shape_rectangles(connection, XCB_SHAPE_SO_SET, kind, XCB_CLIP_ORDERING_YX_BANDED, window, 0, 0,
            static_cast<std::uint32_t>(stripes.size()), stripes.data());
}

} // namespace

std::vector<xcb_rectangle_t> roundedStripes(int width, int height, int radius)
{
    const int round = std::max(0, std::min({ radius, width / 2, height / 2 }));
    std::vector<xcb_rectangle_t> upper;
    std::vector<xcb_rectangle_t> lower;
    for (int row = 0; row < round; ++row) {
        const double up = round - (row + 0.5);
        const int inset = static_cast<int>(std::lround(round - std::sqrt(round * round - up * up)));
        upper.push_back(stripe(inset, row, width - inset * 2, 1));
        lower.push_back(stripe(inset, height - 1 - row, width - inset * 2, 1));
    }
    upper.push_back(stripe(0, round, width, height - round * 2));
    upper.insert(upper.end(), lower.rbegin(), lower.rend());
    return upper;
}

void cutWindow(xcb_connection_t* connection, xcb_window_t window, std::span<const xcb_rectangle_t> stripes)
{
    shape(connection, window, XCB_SHAPE_SK_BOUNDING, stripes);
}

void limitInput(xcb_connection_t* connection, xcb_window_t window, std::span<const xcb_rectangle_t> stripes)
{
    shape(connection, window, XCB_SHAPE_SK_INPUT, stripes);
}

} // namespace platform
