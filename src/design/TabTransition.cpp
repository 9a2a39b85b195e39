// SPDX-License-Identifier: Apache-2.0
#include "design/TabTransition.h"

#include "design/Appearance.h"
#include "design/OstrelStyle.h"

#include <QEasingCurve>
#include <QEvent>
#include <QMetaObject>
#include <QPainter>
#include <QPixmap>
#include <QVariantAnimation>
#include <QWidget>

#include <cmath>

namespace ostrel {

namespace {

constexpr auto overlayName = "shaperTabFade";
constexpr int duration = 180; // milliseconds
constexpr double slide = 6; // points

/// Slow at both ends.
QEasingCurve easeInEaseOut()
{
    QEasingCurve curve(QEasingCurve::BezierSpline);
    curve.addCubicBezierSegment({ 0.42, 0 }, { 0.58, 1 }, { 1, 1 });
    return curve;
}

/// Lies over the layer with the old picture and the new one.
class TabFade final : public QWidget {
public:
    TabFade(QWidget& layer, double from)
        : QWidget(&layer)
        , from_(from)
        , before_(layer.grab())
    {
        setObjectName(QLatin1String(overlayName));
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setAttribute(Qt::WA_OpaquePaintEvent);
        setGeometry(layer.rect());
        animation_.setStartValue(0.0);
        animation_.setEndValue(1.0);
        animation_.setDuration(duration);
        animation_.setEasingCurve(easeInEaseOut());
        connect(&animation_, &QVariantAnimation::valueChanged, this, [this] { update(); });
        connect(&animation_, &QVariantAnimation::finished, this, [this] { leave(); });
        layer.installEventFilter(this);
        raise();
        show();
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        switch (event->type()) {
        case QEvent::Hide:
        case QEvent::Resize:
            leave();
            break;
        case QEvent::ChildAdded:
        case QEvent::ChildPolished:
            // The new content comes to lie above everything that was there.
            raise();
            break;
        default:
            break;
        }
        return false;
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        if (grabbing_)
            return;
        if (after_.isNull() && !asked_) {
            // The new content stands by now. It can't be painted inside of this painting.
            asked_ = true;
            QMetaObject::invokeMethod(
                this, [this] { begin(); }, Qt::QueuedConnection);
        }
        const double progress = after_.isNull() ? 0 : animation_.currentValue().toDouble();
        QPainter painter(this);
        painter.fillRect(rect(), resolved(OstrelStyle::bg, *this));
        // On whole device pixels, so that the text stays as sharp as it is.
        const double ratio = devicePixelRatioF();
        painter.translate(std::round(from_ * (1 - progress) * ratio) / ratio, 0);
        // The new one over the whole of the old one: what is the same in both doesn't flicker.
        painter.drawPixmap(QPointF(), before_);
        if (after_.isNull())
            return;
        painter.setOpacity(progress);
        painter.drawPixmap(QPointF(), after_);
    }

private:
    void begin()
    {
        if (isHidden())
            return;
        grabbing_ = true;
        setAttribute(Qt::WA_OpaquePaintEvent, false);
        after_ = parentWidget()->grab();
        setAttribute(Qt::WA_OpaquePaintEvent);
        grabbing_ = false;
        animation_.start();
    }

    /// Out of sight at once; it may be in the middle of an event of its own.
    void leave()
    {
        parentWidget()->removeEventFilter(this);
        animation_.stop();
        hide();
        deleteLater();
    }

    double from_; ///< how far to the right it starts, in points
    QPixmap before_;
    QPixmap after_;
    QVariantAnimation animation_ { this };
    bool asked_ = false;
    bool grabbing_ = false;
};

} // namespace

void shaperTabTransition(QWidget& layer, bool forward, bool reduceMotion)
{
    delete layer.findChild<QWidget*>(QLatin1String(overlayName), Qt::FindDirectChildrenOnly);
    if (!layer.isVisible() || layer.size().isEmpty())
        return;
    double from = forward ? slide : -slide;
    if (reduceMotion)
        from = 0;
    // Owned by the layer.
    new TabFade(layer, from);
}

} // namespace ostrel
