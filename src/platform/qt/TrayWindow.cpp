// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/TrayWindow.h"

#include "platform/qt/TrayPaint.h"
#include "platform/qt/Xcb.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

namespace platform {

namespace {

/// The height that icons ask for, in points. Trays give their own.
constexpr double usualHeight = 22;
/// In pixels. No tray gives more; a mad one shall not make us draw for ever.
constexpr int longestSide = 2048;
/// In pixels, before the tray gives a size.
constexpr int firstSide = 16;

/// WM_SIZE_HINTS: which of its figures hold, and their places.
constexpr std::uint32_t minimumHolds = 1U << 4U;
constexpr std::uint32_t baseHolds = 1U << 8U;
constexpr std::size_t hintFigures = 18;
constexpr std::size_t minimumPlace = 5;
constexpr std::size_t basePlace = 15;

} // namespace

TrayAtoms::TrayAtoms(xcb_connection_t* connection)
{
    const auto atoms = internAtoms(connection,
        { "_NET_SYSTEM_TRAY_S0", "_NET_SYSTEM_TRAY_OPCODE", "_NET_SYSTEM_TRAY_VISUAL", "MANAGER",
            "_XEMBED_INFO", "_NET_WM_NAME", "UTF8_STRING" });
    selection = atoms[0];
    opcode = atoms[1];
    visual = atoms[2];
    manager = atoms[3];
    embedInfo = atoms[4];
    windowName = atoms[5];
    utf8 = atoms[6];
}

TrayWindow::TrayWindow(
    xcb_connection_t* connection, const TrayAtoms& atoms, TrayVisual visual, const std::string& programName)
    : connection_(connection)
    , atoms_(atoms)
    , visual_(visual)
    , window_(xcb_generate_id(connection))
    , width_(firstSide)
    , height_(firstSide)
{
    const xcb_window_t root = rootWindow(connection);
    constexpr std::uint32_t events = XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY
        | XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_ENTER_WINDOW
        | XCB_EVENT_MASK_LEAVE_WINDOW;
    std::uint32_t mask = XCB_CW_BACK_PIXMAP | XCB_CW_EVENT_MASK;
    std::vector<std::uint32_t> values { XCB_BACK_PIXMAP_PARENT_RELATIVE, events };
    if (visual_.blends()) {
        colours_ = xcb_generate_id(connection);
        send(xcb_create_colormap_checked(connection, XCB_COLORMAP_ALLOC_NONE, colours_, root, visual_.id));
        mask = XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP;
        values = { 0, 0, events, colours_ };
    }
    send(xcb_create_window_checked(connection, visual_.depth, window_, root, 0, 0,
        static_cast<std::uint16_t>(width_), static_cast<std::uint16_t>(height_), 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, visual_.id, mask, values.data()));
    pen_ = xcb_generate_id(connection);
    send(xcb_create_gc_checked(connection, pen_, window_, 0, nullptr));
    // The protocol's version, and that the tray shall show the window.
    constexpr std::array<std::uint32_t, 2> embed { 0, 1 };
    send(xcb_change_property_checked(connection, XCB_PROP_MODE_REPLACE, window_, atoms.embedInfo,
        atoms.embedInfo, 32, embed.size(), embed.data()));
    std::string names = programName;
    names.push_back('\0');
    names += programName;
    names.push_back('\0');
    send(xcb_change_property_checked(connection, XCB_PROP_MODE_REPLACE, window_, XCB_ATOM_WM_CLASS,
        XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(names.size()), names.data()));
}

TrayWindow::~TrayWindow()
{
    send(xcb_free_gc_checked(connection_, pen_));
    if (window_ != XCB_NONE)
        send(xcb_destroy_window_checked(connection_, window_));
    if (colours_ != XCB_NONE)
        send(xcb_free_colormap_checked(connection_, colours_));
    xcb_flush(connection_);
}

void TrayWindow::send(xcb_void_cookie_t cookie) const
{
    // The window may die with its tray at any moment; the toolkit would print the errors of unchecked
    // requests.
    xcb_discard_reply(connection_, cookie.sequence);
}

void TrayWindow::show(const StatusItemFace& face, double scale)
{
    const StatusItemFace before = std::exchange(face_, face);
    const bool first = scale_ == 0;
    if (first || before.length != face.length || scale_ != scale)
        hintSize(face.length, scale);
    scale_ = scale;
    if (first || before.toolTip != face.toolTip)
        send(xcb_change_property_checked(connection_, XCB_PROP_MODE_REPLACE, window_, atoms_.windowName,
            atoms_.utf8, 8, static_cast<std::uint32_t>(face.toolTip.size()), face.toolTip.data()));
    const auto key
        = [](const StatusItemFace& one) { return one.picture ? one.picture->key() : std::string(); };
    if (!first && before.picture != face.picture && key(before) != key(face))
        paint();
    xcb_flush(connection_);
}

void TrayWindow::hintSize(double length, double scale)
{
    std::array<std::uint32_t, hintFigures> hints {};
    hints[0] = minimumHolds | baseHolds;
    const auto width = static_cast<std::uint32_t>(
        std::clamp(std::ceil((length > 0 ? length : usualHeight) * scale), 1.0, double { longestSide }));
    const auto height = static_cast<std::uint32_t>(std::lround(usualHeight * scale));
    for (const std::size_t place : { minimumPlace, basePlace }) {
        hints[place] = width;
        hints[place + 1] = height;
    }
    send(xcb_change_property_checked(connection_, XCB_PROP_MODE_REPLACE, window_, XCB_ATOM_WM_NORMAL_HINTS,
        XCB_ATOM_WM_SIZE_HINTS, 32, hints.size(), hints.data()));
    if (scale_ != 0)
        return;
    // Some trays take the window as large as it is.
    const std::array<std::uint32_t, 2> size { width, height };
    send(xcb_configure_window_checked(
        connection_, window_, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, size.data()));
}

void TrayWindow::resized(int width, int height)
{
    width_ = std::min(width, longestSide);
    height_ = std::min(height, longestSide);
}

void TrayWindow::paint()
{
    if (window_ == XCB_NONE || width_ <= 0 || height_ <= 0)
        return;
    if (!face_.picture) {
        send(xcb_clear_area_checked(connection_, 0, window_, 0, 0, 0, 0));
    } else if (visual_.blends()) {
        put(premultiplied(face_.picture->draw(width_, height_, neutralInk)));
    } else {
        // The server draws the tray's own background, which is then read back: the picture has soft edges.
        send(xcb_clear_area_checked(connection_, 0, window_, 0, 0, 0, 0));
        const auto behind = background();
        if (!behind.empty())
            put(painted(face_.picture->draw(width_, height_, inkFor(behind)), behind));
    }
    xcb_flush(connection_);
}

std::vector<std::uint32_t> TrayWindow::background() const
{
    const auto asked = xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, window_, 0, 0,
        static_cast<std::uint16_t>(width_), static_cast<std::uint16_t>(height_), ~0U);
    const auto reply = answerTo(connection_, asked, xcb_get_image_reply);
    const auto count = static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_);
    // Nothing comes of a window that can't be seen, or of a display that doesn't keep 4 bytes a pixel.
    if (!reply
        || static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) != count * sizeof(std::uint32_t))
        return {};
    const auto* first = reinterpret_cast<const std::uint32_t*>(xcb_get_image_data(reply.get()));
    return { first, first + count };
}

void TrayWindow::put(const std::vector<std::uint32_t>& pixels) const
{
    const auto line = static_cast<std::size_t>(width_);
    if (pixels.size() != line * static_cast<std::size_t>(height_))
        return;
    const std::uint8_t depth = visual_.blends()
        ? visual_.depth
        : xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root_depth;
    // In bands that fit into the shortest request that a display may allow.
    constexpr std::size_t mostBytes = 1U << 16U;
    const std::size_t rows = std::max<std::size_t>(1, mostBytes / (line * sizeof(std::uint32_t)));
    for (std::size_t top = 0; top < static_cast<std::size_t>(height_); top += rows) {
        const std::size_t high = std::min(rows, static_cast<std::size_t>(height_) - top);
        send(xcb_put_image_checked(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, window_, pen_,
            static_cast<std::uint16_t>(width_), static_cast<std::uint16_t>(high), 0,
            static_cast<std::int16_t>(top), 0, depth,
            static_cast<std::uint32_t>(high * line * sizeof(std::uint32_t)),
            reinterpret_cast<const std::uint8_t*>(pixels.data() + top * line)));
    }
}

} // namespace platform
