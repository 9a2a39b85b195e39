// SPDX-License-Identifier: Apache-2.0
#include "design/controls/ZOLHintCardPanel.h"

#include "design/controls/ZOLHintCard.h"

#include <QEasingCurve>
#include <QEvent>
#include <QHideEvent>
#include <QWindow>

#include <cmath>

namespace ostrel {

namespace {

QEasingCurve motionEase()
{
    QEasingCurve curve(QEasingCurve::BezierSpline);
    curve.addCubicBezierSegment({ 0.2, 0.8 }, { 0.2, 1 }, { 1, 1 });
    return curve;
}

} // namespace

ZOLHintCardPanel::ZOLHintCardPanel(ZOLHintCard& card)
    : FloatingPanel(card, ZOLHintCard::radius(), ZOLHintCard::themedBorder)
{
    setMessage(card.title(), card.fact());
    rise_.setObjectName("zol-appear");
    rise_.setStartValue(0.0);
    rise_.setEndValue(1.0);
    rise_.setEasingCurve(motionEase());
    connect(&rise_, &QVariantAnimation::valueChanged, this,
        [this](const QVariant& value) { setProgress(value.toDouble()); });
    connect(&rise_, &QVariantAnimation::finished, this, [this] { settle(); });
}

ZOLHintCard* ZOLHintCardPanel::contentView() const { return dynamic_cast<ZOLHintCard*>(card()); }

void ZOLHintCardPanel::setFrameOrigin(const platform::Point& point)
{
    settle();
    FloatingPanel::setFrameOrigin(point);
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
    return FloatingPanel::eventFilter(watched, event);
}

void ZOLHintCardPanel::takeKeyboard()
{
    // Through the window itself: the toolkit's way of changing a flag takes the view off the screen.
    windowHandle()->setFlag(Qt::WindowDoesNotAcceptFocus, false);
    activate_();
    if (auto* const card = contentView(); card && !card->isAncestorOf(focusWidget()))
        card->setFocus(Qt::MouseFocusReason);
}

void ZOLHintCardPanel::showEvent(QShowEvent* event)
{
    FloatingPanel::showEvent(event);
    windowHandle()->installEventFilter(this);
}

void ZOLHintCardPanel::hideEvent(QHideEvent* event)
{
    if (!event->spontaneous())
        settle();
}

} // namespace ostrel
