// SPDX-License-Identifier: Apache-2.0
#include "design/HoverTip.h"

#include <QCursor>
#include <QEnterEvent>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QToolTip>
#include <QWidget>

#include <utility>

namespace ostrel {

HoverTip::HoverTip(QWidget& view, std::function<QString(QPointF)> textAt)
    : view_(view)
    , textAt_(std::move(textAt))
{
    view_.setMouseTracking(true);
    view_.installEventFilter(this);
}

void HoverTip::renew()
{
    if (at_)
        show(textAt_(*at_));
}

bool HoverTip::eventFilter(QObject*, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Enter:
        follow(static_cast<QEnterEvent*>(event)->position());
        break;
    case QEvent::MouseMove:
        follow(static_cast<QMouseEvent*>(event)->position());
        break;
    case QEvent::ToolTip:
        // The toolkit shows what is set by then.
        follow(QPointF(static_cast<QHelpEvent*>(event)->pos()));
        break;
    case QEvent::Leave:
    case QEvent::Hide:
        clear();
        break;
    default:
        break;
    }
    return false;
}

void HoverTip::follow(QPointF at)
{
    at_ = at;
    show(textAt_(at));
}

void HoverTip::clear()
{
    at_.reset();
    show({});
}

void HoverTip::show(const QString& text)
{
    const QString before = view_.toolTip();
    const bool isUp = !before.isEmpty() && QToolTip::isVisible() && QToolTip::text() == before;
    if (text != before)
        view_.setToolTip(text);
    if (isUp && text.isEmpty())
        QToolTip::hideText();
    else if (isUp)
        QToolTip::showText(QCursor::pos(), text, &view_);
}

} // namespace ostrel
