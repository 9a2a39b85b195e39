// SPDX-License-Identifier: Apache-2.0
#include "design/controls/ZOLHintCardPanel.h"

#include "design/Paint.h"
#include "design/controls/ZOLHintCard.h"

#include <QEasingCurve>
#include <QEvent>
#include <QGuiApplication>
#include <QHideEvent>
#include <QPainter>
#include <QRegion>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <cmath>

namespace ostrel {

namespace {

QEasingCurve motionEase()
{
    QEasingCurve curve(QEasingCurve::BezierSpline);
    curve.addCubicBezierSegment({ 0.2, 0.8 }, { 0.2, 1 }, { 1, 1 });
    return curve;
}

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

ZOLHintCardPanel::ZOLHintCardPanel(ZOLHintCard& card)
    : QWidget(
        nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus)
{
    setAttribute(Qt::WA_ShowWithoutActivating);
    setWindowTitle(card.accessibleName());
    rise_.setObjectName("zol-appear");
    rise_.setStartValue(0.0);
    rise_.setEndValue(1.0);
    rise_.setEasingCurve(motionEase());
    connect(&rise_, &QVariantAnimation::valueChanged, this,
        [this](const QVariant& value) { setProgress(value.toDouble()); });
    connect(&rise_, &QVariantAnimation::finished, this, [this] { settle(); });
    card.setParent(this);
    card.move(0, 0);
    card.show();
    card.installEventFilter(this);
    resize(card.size());
}

ZOLHintCard* ZOLHintCardPanel::contentView() const
{
    for (QObject* child : children())
        if (auto* const card = dynamic_cast<ZOLHintCard*>(child))
            return card;
    return nullptr;
}

void ZOLHintCardPanel::setFrameOrigin(const platform::Point& point)
{
    const QScreen* const primary = QGuiApplication::primaryScreen();
    const platform::Rect frame { point.x, point.y, width() + 0.0, height() + 0.0 };
    settle();
    move(topLeftOf(frame, primary ? primary->geometry() : QRect()));
}

void ZOLHintCardPanel::orderFrontRegardless()
{
    show();
    raise();
}

void ZOLHintCardPanel::sink(double shift)
{
    rise_.stop();
    if (!place_)
        place_ = pos();
    shift_ = shift;
    setProgress(0);
}

void ZOLHintCardPanel::rise(double seconds, double shift)
{
    sink(shift);
    rise_.setDuration(static_cast<int>(std::lround(seconds * 1000)));
    rise_.start();
}

void ZOLHintCardPanel::settle()
{
    rise_.stop();
    if (place_)
        setProgress(1);
    place_.reset();
}

void ZOLHintCardPanel::setProgress(double progress)
{
    setWindowOpacity(progress);
    move(*place_ + QPoint(0, static_cast<int>(std::round(shift_ * (1 - progress)))));
}

bool ZOLHintCardPanel::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::MouseButtonPress && watched == windowHandle())
        takeKeyboard();
    else if (event->type() == QEvent::Resize && watched == contentView())
        resize(contentView()->size());
    return false;
}

void ZOLHintCardPanel::takeKeyboard()
{
    // Through the window itself: the toolkit's way of changing a flag takes the view off the screen.
    windowHandle()->setFlag(Qt::WindowDoesNotAcceptFocus, false);
    activateWindow();
    if (auto* const card = contentView(); card && !card->isAncestorOf(focusWidget()))
        card->setFocus(Qt::MouseFocusReason);
}

void ZOLHintCardPanel::showEvent(QShowEvent*)
{
    windowHandle()->setFlag(Qt::WindowDoesNotAcceptFocus);
    windowHandle()->installEventFilter(this);
}

void ZOLHintCardPanel::hideEvent(QHideEvent* event)
{
    if (!event->spontaneous())
        settle();
}

void ZOLHintCardPanel::resizeEvent(QResizeEvent*)
{
    // A window that lets what is behind it through needs a desktop that can blend; a shape doesn't.
    setMask(roundRegion(size(), ZOLHintCard::radius()));
}

void ZOLHintCardPanel::paintEvent(QPaintEvent*)
{
    // What the shape has beyond the card's own smooth corners belongs to its border.
    QPainter(this).fillRect(rect(), qColor(ZOLHintCard::border));
}

} // namespace ostrel
