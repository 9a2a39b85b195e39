// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/ItemMenu.h"

#include <QAction>
#include <QMenu>

namespace platform {

namespace {

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

} // namespace platform
