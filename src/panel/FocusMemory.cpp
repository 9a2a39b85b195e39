// SPDX-License-Identifier: Apache-2.0
#include "panel/FocusMemory.h"

#include <QWidget>

namespace ostrel {

namespace {

QString kindOf(const QWidget& view) { return QString::fromLatin1(view.metaObject()->className()); }

} // namespace

std::optional<FocusMemory> FocusMemory::of(const QWidget& tree)
{
    const QWidget* focused = tree.window()->focusWidget();
    if (!focused || !tree.isAncestorOf(focused))
        return std::nullopt;
    FocusMemory memory { kindOf(*focused), focused->accessibleName(), 0 };
    for (const QWidget* view : tree.findChildren<QWidget*>()) {
        if (view == focused)
            break;
        if (kindOf(*view) == memory.kind && view->accessibleName() == memory.name)
            ++memory.place;
    }
    return memory;
}

bool FocusMemory::restore(const QWidget& tree) const
{
    int before = 0;
    for (QWidget* view : tree.findChildren<QWidget*>()) {
        if (kindOf(*view) != kind || view->accessibleName() != name || before++ != place)
            continue;
        // For what reason counts: a ring is drawn for the keyboard's.
        view->setFocus(Qt::TabFocusReason);
        return true;
    }
    return false;
}

} // namespace ostrel
