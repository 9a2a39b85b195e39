// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/ItemMenu.h"

#include "platform/qt/Xcb.h"
#include "platform/qt/XcbEventFilter.h"

#include <chrono>

#include <QAction>
#include <QMenu>
#include <QTimer>
#include <QWindow>

namespace platform {

namespace {

/// Shorter than anybody takes from letting a button go to the next press.
constexpr std::chrono::milliseconds grabInterval { 50 };

/// Whether a button of the pointer is down, so that whoever has it keeps the pointer.
bool isHeld(xcb_connection_t* connection)
{
    constexpr unsigned buttons = XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3;
    const auto pointer = answerTo(
        connection, xcb_query_pointer(connection, rootWindow(connection)), xcb_query_pointer_reply);
    return pointer && (pointer->mask & buttons) != 0;
}

void addRows(QMenu& menu, const Menu& rows, MainQueue& queue)
{
    menu.setToolTipsVisible(true);
    for (const MenuItem& row : rows) {
        if (row.separator) {
            menu.addSeparator();
            continue;
        }
        // A single ampersand would mark a mnemonic, and vanish.
        const QString title = QString::fromStdString(row.title).replace('&', "&&");
        QAction* action = nullptr;
        if (row.submenu.empty()) {
            action = menu.addAction(title);
        } else {
            QMenu* below = menu.addMenu(title);
            addRows(*below, row.submenu, queue);
            action = below->menuAction();
        }
        action->setEnabled(row.action || !row.submenu.empty());
        if (!row.toolTip.empty())
            action->setToolTip(QString::fromStdString(row.toolTip));
        if (row.checked) {
            action->setCheckable(true);
            action->setChecked(*row.checked);
        }
        if (row.action)
            QObject::connect(
                action, &QAction::triggered, action, [&queue, job = row.action] { queue.post(job); });
    }
}

} // namespace

std::unique_ptr<QMenu> makeMenu(const Menu& rows, MainQueue& queue)
{
    auto menu = std::make_unique<QMenu>();
    addRows(*menu, rows, queue);
    return menu;
}

void popUp(QMenu& menu, const QPoint& place)
{
    menu.popup(place);
    xcb_connection_t* connection = toolkitXConnection();
    if (!connection)
        return;
    auto* retry = new QTimer(&menu);
    QObject::connect(&menu, &QMenu::aboutToHide, retry, &QTimer::stop);
    QObject::connect(retry, &QTimer::timeout, retry, [&menu, retry, connection] {
        if (isHeld(connection))
            return;
        // The toolkit has asked before, and took a refusal for a yes.
        menu.windowHandle()->setMouseGrabEnabled(true);
        menu.windowHandle()->setKeyboardGrabEnabled(true);
        retry->stop();
    });
    retry->start(grabInterval);
}

} // namespace platform
