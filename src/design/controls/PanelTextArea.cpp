// SPDX-License-Identifier: Apache-2.0
#include "design/controls/PanelTextArea.h"

#include "design/Fonts.h"
#include "design/OstrelStyle.h"
#include "design/controls/FieldGround.h"

#include <QEvent>
#include <QFocusEvent>
#include <QPainter>
#include <QTextDocument>

namespace ostrel {

namespace {

constexpr int sideInset = 10; ///< where a field of one line begins
constexpr int endInset = 6;

} // namespace

PanelTextArea::PanelTextArea(const QString& placeholder, double size, int width, int height)
{
    setFont(OstrelStyle::mono(size, QFont::Normal));
    setFixedSize(width, height);
    setFrameShape(QFrame::NoFrame);
    setViewportMargins(sideInset, endInset, sideInset, endInset);
    document()->setDocumentMargin(0);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setTabChangesFocus(true);
    setPlaceholderText(placeholder);
    setAccessibleName(placeholder);
    viewport()->setAutoFillBackground(false);
    showThrough(*this);
}

bool PanelTextArea::event(QEvent* event)
{
    // Of the frame; what is typed is painted in the viewport.
    if (event->type() == QEvent::Paint) {
        paintGround();
        return true;
    }
    const bool done = QPlainTextEdit::event(event);
    if (event->type() == QEvent::PaletteChange)
        showThrough(*this);
    return done;
}

void PanelTextArea::focusInEvent(QFocusEvent* event)
{
    QPlainTextEdit::focusInEvent(event);
    update();
}

void PanelTextArea::focusOutEvent(QFocusEvent* event)
{
    QPlainTextEdit::focusOutEvent(event);
    update();
}

void PanelTextArea::paintGround()
{
    QPainter painter(this);
    paintFieldGround(painter, *this);
}

} // namespace ostrel
