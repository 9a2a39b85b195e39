// SPDX-License-Identifier: Apache-2.0
#include "design/controls/FloatingPanel.h"

#include "design/Accessibility.h"
#include "design/Appearance.h"

#include <QAccessible>
#include <QEvent>
#include <QGuiApplication>
#include <QPainter>
#include <QRegion>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <cmath>

namespace ostrel {

namespace {

/// The rows of a rectangle with round corners, each as long as a circle lets it be.
QRegion roundRegion(const QSize& size, double radius)
{
    QRegion region;
    for (int y = 0; y < size.height(); ++y) {
        const double fromEdge = std::min(y, size.height() - 1 - y) + 0.5;
        int inset = 0;
        if (fromEdge < radius) {
            const double across = radius - fromEdge;
            inset = static_cast<int>(std::round(radius - std::sqrt(radius * radius - across * across)));
        }
        region += QRect(inset, y, size.width() - 2 * inset, 1);
    }
    return region;
}

} // namespace

QPoint topLeftOf(const platform::Rect& frame, const QRect& primaryScreen)
{
    const double below = primaryScreen.y() + primaryScreen.height();
    return { primaryScreen.x() + static_cast<int>(std::round(frame.x)),
        static_cast<int>(std::round(below - frame.y - frame.height)) };
}

FloatingPanel::FloatingPanel(QWidget& card, double radius, const ThemedColor& edge)
    : QWidget(
        nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus)
    , radius_(radius)
    , edge_(edge)
{
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAccessibleRole(*this, QAccessible::AlertMessage);
    card.setParent(this);
    card.move(0, 0);
    card.show();
    card.installEventFilter(this);
    fit(card);
}

QWidget* FloatingPanel::card() const { return findChild<QWidget*>(QString(), Qt::FindDirectChildrenOnly); }

void FloatingPanel::setMessage(const QString& title, const QString& fact)
{
    setWindowTitle(title);
    setAccessibleName(title);
    setAccessibleDescription(fact);
}

void FloatingPanel::setFrameOrigin(const platform::Point& point)
{
    const QScreen* const primary = QGuiApplication::primaryScreen();
    const platform::Rect frame { point.x, point.y, width() + 0.0, height() + 0.0 };
    move(topLeftOf(frame, primary ? primary->geometry() : QRect()));
}

void FloatingPanel::orderFrontRegardless()
{
    show();
    raise();
}

bool FloatingPanel::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Resize && watched == card())
        fit(*card());
    return false;
}

void FloatingPanel::showEvent(QShowEvent*) { windowHandle()->setFlag(Qt::WindowDoesNotAcceptFocus); }

void FloatingPanel::fit(const QWidget& card)
{
    resize(card.size());
    // A window that lets what is behind it through needs a desktop that can blend; a shape doesn't.
    setMask(roundRegion(size(), radius_));
}

void FloatingPanel::paintEvent(QPaintEvent*) { QPainter(this).fillRect(rect(), resolved(edge_, *this)); }

} // namespace ostrel
