// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtKeyMonitor.h"

#include "platform/qt/KeyPositions.h"
#include "platform/qt/XcbEventFilter.h"

#include <limits>
#include <utility>

#include <QCoreApplication>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QWindow>

namespace platform {

namespace {

/// Stands for a place that has no number here.
constexpr std::uint32_t noPlace = std::numeric_limits<std::uint16_t>::max();

/// From here on the toolkit's numbers are no characters.
constexpr int firstSpecialKey = Qt::Key_Escape;

KeyDown keyDown(const QKeyEvent& event)
{
    KeyDown key;
    const auto place = keyCodeOf(event.nativeScanCode());
    key.keyCode = place.value_or(noPlace);
    for (const auto& [modifier, flag] : { std::pair { Qt::ShiftModifier, ModifierFlag::shift },
             { Qt::ControlModifier, ModifierFlag::control }, { Qt::AltModifier, ModifierFlag::option },
             { Qt::MetaModifier, ModifierFlag::command } })
        if (event.modifiers().testFlag(modifier))
            key.modifierFlags |= flag;
    // A key whose place isn't known couldn't be registered.
    if (place && event.key() > 0 && event.key() < firstSpecialKey) {
        const auto sign = static_cast<char32_t>(event.key());
        key.characters = QString::fromUcs4(&sign, 1).toStdString();
    }
    return key;
}

} // namespace

QtKeyMonitor::QtKeyMonitor(std::function<bool(const KeyDown&)> take)
    : take_(std::make_shared<std::function<bool(const KeyDown&)>>(std::move(take)))
{
    QCoreApplication::instance()->installEventFilter(this);
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, [this] { holdKeyboard(); });
    holdKeyboard();
}

QtKeyMonitor::~QtKeyMonitor()
{
    if (xcb_connection_t* const connection = toolkitXConnection()) {
        xcb_ungrab_keyboard(connection, XCB_CURRENT_TIME);
        xcb_flush(connection);
    }
}

bool QtKeyMonitor::eventFilter(QObject* watched, QEvent* event)
{
    // The window is asked first of all.
    if (event->type() != QEvent::KeyPress || !watched->isWindowType())
        return false;
    const auto& key = static_cast<const QKeyEvent&>(*event);
    if (key.isAutoRepeat())
        return true;
    const auto take = take_;
    return (*take)(keyDown(key));
}

void QtKeyMonitor::holdKeyboard()
{
    xcb_connection_t* const connection = toolkitXConnection();
    if (!connection)
        return;
    if (const QWindow* const window = QGuiApplication::focusWindow()) {
        const auto asked = xcb_grab_keyboard(connection, 1, static_cast<xcb_window_t>(window->winId()),
            XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        xcb_discard_reply(connection, asked.sequence);
    } else {
        xcb_ungrab_keyboard(connection, XCB_CURRENT_TIME);
    }
    xcb_flush(connection);
}

} // namespace platform
