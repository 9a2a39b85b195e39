// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/XSettingsWatch.h"

#include "platform/qt/XSettings.h"
#include "platform/qt/Xcb.h"

#include <cstddef>
#include <cstdint>

namespace platform {

namespace {

/// In 32-bit units: 1 MiB. Real ones have a few KiB.
constexpr std::uint32_t longestSettings = 1U << 18U;

} // namespace

XSettingsWatch::XSettingsWatch(xcb_connection_t* connection)
    : connection_(connection)
{
    const auto atoms = internAtoms(connection, { "_XSETTINGS_S0", "_XSETTINGS_SETTINGS", "MANAGER" });
    selection_ = atoms[0];
    settings_ = atoms[1];
    announcement_ = atoms[2];
    // A manager that starts announces itself there.
    addToEventMask(connection, rootWindow(connection), XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    findManager();
}

bool XSettingsWatch::handle(const xcb_generic_event_t& event)
{
    switch (kindOf(event)) {
    case XCB_CLIENT_MESSAGE: {
        const auto& message = as<xcb_client_message_event_t>(event);
        if (message.type != announcement_ || message.format != 32 || message.data.data32[1] != selection_)
            return false;
        findManager();
        return true;
    }
    case XCB_DESTROY_NOTIFY:
        if (as<xcb_destroy_notify_event_t>(event).window != manager_)
            return false;
        findManager();
        return true;
    case XCB_PROPERTY_NOTIFY: {
        const auto& property = as<xcb_property_notify_event_t>(event);
        if (property.window != manager_ || property.atom != settings_)
            return false;
        read();
        return true;
    }
    default:
        return false;
    }
}

void XSettingsWatch::findManager()
{
    manager_ = selectionOwner(connection_, selection_);
    // Events first: a change between the two requests is then told, not missed.
    if (manager_ != XCB_NONE
        && addToEventMask(
               connection_, manager_, XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY)
            == EventMask::noWindow)
        manager_ = XCB_NONE;
    read();
}

void XSettingsWatch::read()
{
    animations_.reset();
    if (manager_ == XCB_NONE)
        return;
    const auto reply = answerTo(connection_,
        xcb_get_property(connection_, 0, manager_, settings_, settings_, 0, longestSettings),
        xcb_get_property_reply);
    if (!reply || reply->format != 8 || reply->bytes_after != 0)
        return;
    const auto* bytes = static_cast<const std::uint8_t*>(xcb_get_property_value(reply.get()));
    const auto count = static_cast<std::size_t>(xcb_get_property_value_length(reply.get()));
    if (const auto value = xsettingsInteger({ bytes, count }, "Gtk/EnableAnimations"))
        animations_ = *value != 0;
}

} // namespace platform
