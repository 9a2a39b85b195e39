// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/XEmbedTray.h"

#include "platform/qt/Xcb.h"

#include <utility>

namespace platform {

namespace {

constexpr std::uint32_t requestDock = 0;
constexpr std::uint8_t leftButton = 1;
constexpr std::uint8_t rightButton = 3;

} // namespace

XEmbedTray::XEmbedTray(
    xcb_connection_t* connection, std::string programName, StatusItemFace face, double scale, Owner owner)
    : connection_(connection)
    , atoms_(connection)
    , programName_(std::move(programName))
    , face_(std::move(face))
    , scale_(scale)
    , owner_(std::move(owner))
{
    // A tray that starts announces itself there.
    addToEventMask(connection, rootWindow(connection), XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    findTray();
}

void XEmbedTray::show(const StatusItemFace& face, double scale)
{
    face_ = face;
    scale_ = scale;
    if (window_)
        window_->show(face, scale);
}

void XEmbedTray::findTray()
{
    window_.reset();
    around_.clear();
    place_.reset();
    // Held still, so that the tray can't go between the answer and the choice of its events.
    xcb_grab_server(connection_);
    tray_ = selectionOwner(connection_, atoms_.selection);
    if (tray_ != XCB_NONE
        && addToEventMask(connection_, tray_, XCB_EVENT_MASK_STRUCTURE_NOTIFY) == EventMask::noWindow)
        tray_ = XCB_NONE;
    xcb_ungrab_server(connection_);
    xcb_flush(connection_);
    if (tray_ != XCB_NONE)
        askToDock();
}

TrayVisual XEmbedTray::visualOf(xcb_window_t tray) const
{
    const auto told = answerTo(connection_,
        xcb_get_property(connection_, 0, tray, atoms_.visual, XCB_ATOM_VISUALID, 0, 1),
        xcb_get_property_reply);
    const auto figures = figuresOf(told);
    if (figures.size() != 1)
        return {};
    const xcb_visualid_t wanted = figures.front();
    const auto screen = xcb_setup_roots_iterator(xcb_get_setup(connection_));
    for (auto depth = xcb_screen_allowed_depths_iterator(screen.data); depth.rem > 0;
         xcb_depth_next(&depth)) {
        const TrayVisual candidate { depth.data->depth, wanted };
        if (!candidate.blends())
            continue;
        for (auto visual = xcb_depth_visuals_iterator(depth.data); visual.rem > 0;
             xcb_visualtype_next(&visual))
            if (visual.data->visual_id == wanted)
                return candidate;
    }
    return {};
}

void XEmbedTray::askToDock()
{
    window_ = std::make_unique<TrayWindow>(connection_, atoms_, visualOf(tray_), programName_);
    window_->show(face_, scale_);
    xcb_client_message_event_t request {};
    request.response_type = XCB_CLIENT_MESSAGE;
    request.format = 32;
    request.window = tray_;
    request.type = atoms_.opcode;
    request.data.data32[0] = XCB_CURRENT_TIME;
    request.data.data32[1] = requestDock;
    request.data.data32[2] = window_->id();
    const auto cookie = xcb_send_event_checked(
        connection_, 0, tray_, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&request));
    xcb_discard_reply(connection_, cookie.sequence);
    xcb_flush(connection_);
}

void XEmbedTray::taken(xcb_window_t parent)
{
    around_.clear();
    place_.reset();
    const xcb_window_t root = rootWindow(connection_);
    if (parent == root) {
        // A tray that ends leaves its windows on the bare desktop.
        window_.reset();
        return;
    }
    for (xcb_window_t at = parent; at != root && at != XCB_NONE && !around_.contains(at);) {
        around_.insert(at);
        addToEventMask(connection_, at, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
        const auto tree = answerTo(connection_, xcb_query_tree(connection_, at), xcb_query_tree_reply);
        at = tree ? tree->parent : static_cast<xcb_window_t>(XCB_NONE);
    }
}

void XEmbedTray::lookAround()
{
    const auto tree = answerTo(connection_, xcb_query_tree(connection_, window_->id()), xcb_query_tree_reply);
    if (tree)
        taken(tree->parent);
}

void XEmbedTray::handle(const xcb_generic_event_t& event)
{
    const auto own = [this](xcb_window_t window) { return window_ && window == window_->id(); };
    const auto moved = [&](xcb_window_t window) {
        if (own(window) || around_.contains(window))
            place_.reset();
    };
    switch (kindOf(event)) {
    case XCB_CLIENT_MESSAGE: {
        const auto& message = as<xcb_client_message_event_t>(event);
        if (message.type == atoms_.manager && message.format == 32
            && message.data.data32[1] == atoms_.selection)
            findTray();
        break;
    }
    case XCB_DESTROY_NOTIFY: {
        const xcb_window_t window = as<xcb_destroy_notify_event_t>(event).window;
        if (own(window)) {
            window_->gone();
            window_.reset();
            around_.clear();
            place_.reset();
        } else if (window == tray_) {
            findTray();
        }
        break;
    }
    case XCB_REPARENT_NOTIFY: {
        const auto& change = as<xcb_reparent_notify_event_t>(event);
        if (own(change.window))
            taken(change.parent);
        else if (around_.contains(change.window))
            lookAround();
        break;
    }
    case XCB_CONFIGURE_NOTIFY: {
        const auto& change = as<xcb_configure_notify_event_t>(event);
        moved(change.window);
        if (own(change.window))
            window_->resized(change.width, change.height);
        break;
    }
    case XCB_MAP_NOTIFY:
        moved(as<xcb_map_notify_event_t>(event).window);
        break;
    case XCB_UNMAP_NOTIFY:
        moved(as<xcb_unmap_notify_event_t>(event).window);
        break;
    case XCB_EXPOSE: {
        const auto& exposed = as<xcb_expose_event_t>(event);
        if (own(exposed.window) && exposed.count == 0)
            window_->paint();
        break;
    }
    case XCB_BUTTON_PRESS:
    case XCB_BUTTON_RELEASE: {
        const auto& button = as<xcb_button_release_event_t>(event);
        if (own(button.event))
            buttonMoved(button, kindOf(event) == XCB_BUTTON_PRESS);
        break;
    }
    case XCB_ENTER_NOTIFY:
    case XCB_LEAVE_NOTIFY: {
        const auto& crossing = as<xcb_enter_notify_event_t>(event);
        if (own(crossing.event))
            owner_.hovered(kindOf(event) == XCB_ENTER_NOTIFY);
        break;
    }
    default:
        break;
    }
}

void XEmbedTray::buttonMoved(const xcb_button_release_event_t& event, bool down)
{
    owner_.hovered(false);
    if (down) {
        pressed_ = event.detail;
        return;
    }
    if (std::exchange(pressed_, std::uint8_t { 0 }) != event.detail
        || (event.detail != leftButton && event.detail != rightButton))
        return;
    const auto now = place();
    const bool inside = now && event.event_x >= 0 && event.event_y >= 0 && event.event_x < now->frame.width()
        && event.event_y < now->frame.height();
    if (inside)
        owner_.pressed({ .x = event.root_x,
            .y = event.root_y,
            .secondary = event.detail == rightButton,
            .control = (event.state & XCB_MOD_MASK_CONTROL) != 0 });
}

std::optional<XEmbedTray::Place> XEmbedTray::place()
{
    if (!window_ || around_.empty())
        return std::nullopt;
    if (place_)
        return place_;
    const xcb_window_t window = window_->id();
    const auto askedSize = xcb_get_geometry(connection_, window);
    const auto askedPlace = xcb_translate_coordinates(connection_, window, rootWindow(connection_), 0, 0);
    const auto askedState = xcb_get_window_attributes(connection_, window);
    const auto size = answerTo(connection_, askedSize, xcb_get_geometry_reply);
    const auto corner = answerTo(connection_, askedPlace, xcb_translate_coordinates_reply);
    const auto state = answerTo(connection_, askedState, xcb_get_window_attributes_reply);
    if (!size || !corner || !state)
        return std::nullopt;
    place_ = Place { { corner->dst_x, corner->dst_y, size->width, size->height },
        state->map_state == XCB_MAP_STATE_VIEWABLE };
    return place_;
}

} // namespace platform
