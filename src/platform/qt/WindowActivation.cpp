// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/WindowActivation.h"

#include "platform/qt/Xcb.h"
#include "platform/qt/XcbEventFilter.h"

#include <cstdint>

#include <QObject>
#include <QWidget>

namespace platform {

namespace {

constexpr std::uint8_t sentByOthers = 0x80;

/// The display tells the time with any change of a property. The toolkit notes it with that event, and asks
/// for the keyboard with it.
class Request final : public QObject {
public:
    Request(QWidget& window, xcb_connection_t* connection)
        : QObject(&window)
        , window_(window)
        , number_(static_cast<xcb_window_t>(window.winId()))
        , stamp_(internAtoms(connection, { "_OSTREL_TIME" })[0])
        , filter_([this](const xcb_generic_event_t& event) { see(event); })
    {
        xcb_change_property(
            connection, XCB_PROP_MODE_REPLACE, number_, stamp_, XCB_ATOM_CARDINAL, 32, 0, nullptr);
        xcb_flush(connection);
    }

private:
    void see(const xcb_generic_event_t& event)
    {
        if ((event.response_type & ~sentByOthers) != XCB_PROPERTY_NOTIFY || done_)
            return;
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (change.window != number_ || change.atom != stamp_)
            return;
        done_ = true;
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (window_.isVisible())
                    window_.activateWindow();
                deleteLater();
            },
            Qt::QueuedConnection); // the toolkit sees the event after this
    }

    QWidget& window_;
    xcb_window_t number_;
    xcb_atom_t stamp_;
    bool done_ = false;
    XcbEventFilter filter_;
};

} // namespace

void takeKeyboard(QWidget& window)
{
    window.raise();
    if (xcb_connection_t* const connection = toolkitXConnection())
        new Request(window, connection);
    else
        window.activateWindow();
}

} // namespace platform
