// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/XEmbedTray.h"

#include "platform/qt/TrayPaint.h"

#include "platform/qt/DisplayBench.h"
#include "support/Waiting.h"

#include <array>

#include <gtest/gtest.h>

namespace {

using namespace platform;

/// All of a rectangle in the ink.
class Block final : public StatusItemPicture {
public:
    [[nodiscard]] Image draw(int width, int height, std::uint32_t ink) const override
    {
        const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
        return { width, height, std::vector<std::uint32_t>(count, 0xff000000U | ink) };
    }
    [[nodiscard]] std::string key() const override { return "block"; }
};

/// A tray on a connection of its own: a strip at (100, 50) of one colour, which takes one window in.
class Tray {
public:
    Tray(const PrivateDisplay& display, std::uint32_t colour)
        : connection_(display.connect())
        , atoms_(connection_.get())
        , window_(xcb_generate_id(connection_.get()))
    {
        const std::array<std::uint32_t, 2> values { colour, 1 };
        xcb_create_window(get(), XCB_COPY_FROM_PARENT, window_, rootWindow(get()), 100, 50, 200, 30, 0,
            XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT,
            values.data());
        xcb_map_window(get(), window_);
        xcb_set_selection_owner(get(), window_, atoms_.selection, XCB_CURRENT_TIME);
        const xcb_client_message_event_t here { .response_type = XCB_CLIENT_MESSAGE,
            .format = 32,
            .window = rootWindow(get()),
            .type = atoms_.manager,
            .data = { .data32 = { XCB_CURRENT_TIME, atoms_.selection } } };
        xcb_send_event(get(), 0, rootWindow(get()), XCB_EVENT_MASK_STRUCTURE_NOTIFY,
            reinterpret_cast<const char*>(&here));
        roundTrip(get());
    }

    /// Takes the window of the first request in; none without one.
    xcb_window_t takeIn()
    {
        roundTrip(get());
        while (auto* event = xcb_poll_for_event(get())) {
            const XcbReply<xcb_generic_event_t> held(event, &std::free);
            const auto& request = reinterpret_cast<const xcb_client_message_event_t&>(*event);
            if ((event->response_type & 0x7fU) != XCB_CLIENT_MESSAGE || request.type != atoms_.opcode)
                continue;
            const xcb_window_t icon = request.data.data32[2];
            xcb_change_save_set(get(), XCB_SET_MODE_INSERT, icon);
            xcb_reparent_window(get(), icon, window_, 10, 4);
            const std::array<std::uint32_t, 2> size { 40, 20 };
            xcb_configure_window(
                get(), icon, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, size.data());
            xcb_map_window(get(), icon);
            roundTrip(get());
            return icon;
        }
        return XCB_NONE;
    }

    void moveTo(std::uint32_t x)
    {
        xcb_configure_window(get(), window_, XCB_CONFIG_WINDOW_X, &x);
        roundTrip(get());
    }

    [[nodiscard]] xcb_connection_t* get() const { return connection_.get(); }

private:
    PrivateDisplay::Connection connection_;
    TrayAtoms atoms_;
    xcb_window_t window_;
};

class XEmbedTrayOnADisplay : public DisplayBench {
protected:
    void start()
    {
        item = std::make_unique<XEmbedTray>(own.get(), "ostrel", face, 1,
            XEmbedTray::Owner { .pressed = [this](const TrayPress& press) { presses.push_back(press); },
                .hovered = [](bool) {} });
        roundTrip(own.get()); // so that the tray finds its request
    }

    /// Lets the item see all that has happened on the display.
    void settle()
    {
        for (int turn = 0; turn < 3; ++turn)
            DisplayBench::settle([this](const xcb_generic_event_t& event) { item->handle(event); });
    }

    void button(
        xcb_window_t window, std::uint8_t kind, std::uint8_t number, std::int16_t x, std::uint16_t state)
    {
        const xcb_button_press_event_t event { .response_type = kind,
            .detail = number,
            .event = window,
            .root_x = static_cast<std::int16_t>(110 + x),
            .root_y = 60,
            .event_x = x,
            .event_y = 6,
            .state = state };
        item->handle(reinterpret_cast<const xcb_generic_event_t&>(event));
    }

    /// The display's colour at the place.
    std::uint32_t pixel(std::int16_t x, std::int16_t y)
    {
        const auto reply = answerTo(own.get(),
            xcb_get_image(own.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, rootWindow(own.get()), x, y, 1, 1, ~0U),
            xcb_get_image_reply);
        return reply ? *reinterpret_cast<const std::uint32_t*>(xcb_get_image_data(reply.get())) & 0xffffffU
                     : 0;
    }

    StatusItemFace face { .length = 64, .toolTip = "tip", .picture = std::make_shared<Block>() };
    std::vector<TrayPress> presses;
    std::unique_ptr<XEmbedTray> item;
};

TEST_F(XEmbedTrayOnADisplay, DocksWithEachTrayThatComesInTheInkThatStandsOutThere)
{
    start();
    EXPECT_FALSE(item->place()) << "there is no tray";
    for (const auto& [background, ink] : { std::tuple { 0xeeeeeeU, darkInk }, { 0x202020U, lightInk } }) {
        auto tray = std::make_unique<Tray>(display, background);
        settle();
        EXPECT_FALSE(item->place()) << "not taken in yet";
        ASSERT_NE(tray->takeIn(), XCB_NONE);
        settle();
        ASSERT_TRUE(item->place());
        EXPECT_EQ(item->place()->frame, (QRect { 110, 54, 40, 20 }));
        EXPECT_TRUE(item->place()->seen);
        EXPECT_EQ(pixel(115, 60), ink);
        EXPECT_EQ(pixel(200, 60), background);
        tray->moveTo(300);
        settle();
        EXPECT_EQ(item->place()->frame.x(), 310) << "the strip moved, not the window in it";
        tray.reset();
        // The display learns of it through another connection, which has no order with ours.
        EXPECT_TRUE(eventually([this] {
            settle();
            return !item->place();
        }));
        EXPECT_NE(pixel(115, 60), ink) << "left on the bare desktop";
    }
}

TEST_F(XEmbedTrayOnADisplay, AsksForItsLengthAndTellsItsNameAndLeavesAtItsEnd)
{
    Tray tray(display, 0xeeeeee);
    start();
    const xcb_window_t icon = tray.takeIn();
    settle();
    face.length = 100;
    face.toolTip = "other tip";
    item->show(face, 2);
    settle();
    const auto property = [&](xcb_atom_t name, xcb_atom_t type) {
        return answerTo(
            tray.get(), xcb_get_property(tray.get(), 0, icon, name, type, 0, 64), xcb_get_property_reply);
    };
    const auto hints = property(XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS);
    ASSERT_EQ(figuresOf(hints).size(), 18U);
    EXPECT_EQ(figuresOf(hints)[5], 200U);
    const TrayAtoms atoms(tray.get());
    const auto name = property(atoms.windowName, atoms.utf8);
    ASSERT_TRUE(name);
    EXPECT_EQ(std::string(static_cast<const char*>(xcb_get_property_value(name.get())),
                  static_cast<std::size_t>(xcb_get_property_value_length(name.get()))),
        "other tip");
    item.reset();
    roundTrip(own.get());
    EXPECT_EQ(xcb_get_geometry_reply(tray.get(), xcb_get_geometry(tray.get(), icon), nullptr), nullptr);
}

TEST_F(XEmbedTrayOnADisplay, APressCountsWhereItEndsOverTheWindow)
{
    Tray tray(display, 0xeeeeee);
    start();
    const xcb_window_t icon = tray.takeIn();
    settle();
    struct Case {
        std::uint8_t down, up;
        std::int16_t x;
        std::uint16_t state;
        const char* told;
    };
    for (const Case& c : { Case { 1, 1, 5, 0, "115 left" },
             { 1, 1, 5, XCB_MOD_MASK_CONTROL, "115 left control" }, { 3, 3, 39, 0, "149 right" },
             { 1, 1, 40, 0, "" }, { 1, 1, -1, 0, "" }, { 2, 2, 5, 0, "" }, { 1, 3, 5, 0, "" } }) {
        presses.clear();
        button(icon, XCB_BUTTON_PRESS, c.down, 3, 0);
        button(icon, XCB_BUTTON_RELEASE, c.up, c.x, c.state);
        std::string told;
        for (const TrayPress& press : presses)
            told += std::to_string(press.x) + (press.secondary ? " right" : " left")
                + (press.control ? " control" : "");
        EXPECT_EQ(told, c.told) << int { c.down } << " " << int { c.up } << " " << c.x;
    }
    button(icon, XCB_BUTTON_RELEASE, 1, 5, 0);
    EXPECT_TRUE(presses.empty()) << "it went down elsewhere";
}

} // namespace
