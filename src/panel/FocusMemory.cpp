// SPDX-License-Identifier: Apache-2.0
#include "panel/FocusMemory.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextCursor>
#include <QWidget>

#include <algorithm>

namespace ostrel {

namespace {

QString kindOf(const QWidget& view) { return QString::fromLatin1(view.metaObject()->className()); }

/// Changes nothing where all is as it was: a change means to others that somebody has typed.
void write(QPlainTextEdit& area, const FocusMemory::Typed& typed)
{
    if (area.toPlainText() != typed.text)
        area.setPlainText(typed.text);
    QTextCursor caret = area.textCursor();
    caret.setPosition(std::min(typed.cursor, static_cast<int>(typed.text.size())));
    area.setTextCursor(caret);
}

} // namespace

bool FocusMemory::means(const QWidget& view) const
{
    if (kindOf(view) != kind || view.objectName() != identifier)
        return false;
    return !identifier.isEmpty() || view.accessibleName() == name;
}

std::optional<FocusMemory> FocusMemory::of(const QWidget& tree)
{
    const QWidget* focused = tree.window()->focusWidget();
    if (!focused || !tree.isAncestorOf(focused))
        return std::nullopt;
    FocusMemory memory { kindOf(*focused), focused->objectName(), focused->accessibleName(), 0, {} };
    for (const QWidget* view : tree.findChildren<QWidget*>()) {
        if (view == focused)
            break;
        if (memory.means(*view))
            ++memory.place;
    }
    if (const auto* field = qobject_cast<const QLineEdit*>(focused))
        memory.typed = Typed { field->text(), field->cursorPosition() };
    else if (const auto* area = qobject_cast<const QPlainTextEdit*>(focused))
        memory.typed = Typed { area->toPlainText(), area->textCursor().position() };
    return memory;
}

bool FocusMemory::restore(const QWidget& tree) const
{
    int before = 0;
    for (QWidget* view : tree.findChildren<QWidget*>()) {
        if (!means(*view) || before++ != place)
            continue;
        // For what reason counts: a ring is drawn for the keyboard's.
        if (view->isEnabled())
            view->setFocus(Qt::TabFocusReason);
        // Only then: a field that gets the keyboard selects all of it.
        if (auto* field = qobject_cast<QLineEdit*>(view); field && typed) {
            field->setText(typed->text);
            field->setCursorPosition(typed->cursor);
        } else if (auto* area = qobject_cast<QPlainTextEdit*>(view); area && typed)
            write(*area, *typed);
        return view->isEnabled();
    }
    return false;
}

} // namespace ostrel
