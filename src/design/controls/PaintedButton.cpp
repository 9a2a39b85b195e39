// SPDX-License-Identifier: Apache-2.0
#include "design/controls/PaintedButton.h"

#include "design/Accessibility.h"
#include "design/Appearance.h"
#include "design/Keys.h"
#include "design/Paint.h"

#include <QEvent>
#include <QFontMetricsF>
#include <QPainter>

#include <utility>

namespace ostrel {

namespace {

/// The blank at the ends of a text's first and last glyph, in points: that much of it may stand in the
/// margin.
constexpr double sideBearings = 1;

} // namespace

PaintedButton::PaintedButton(ButtonKind kind, const QString& caption, int width, int height, QWidget* parent)
    : QAbstractButton(parent)
    , kind_(kind)
{
    setAccessibleRole(*this, QAccessible::Button);
    setAccessibleSelected(*this, false);
    setFixedSize(width, height);
    setFocusPolicy(Qt::TabFocus);
    setCursor(Qt::PointingHandCursor);
    setCaption(caption);
    connect(this, &QAbstractButton::clicked, this, [this] { press(); });
}

void PaintedButton::setCaption(const QString& caption)
{
    const bool named = accessibleName() != caption_;
    caption_ = caption.toLower();
    if (!named)
        setAccessibleName(caption_);
    update();
}

void PaintedButton::setActive(bool active)
{
    if (active_ == active)
        return;
    active_ = active;
    setAccessibleSelected(*this, active);
    update();
}

void PaintedButton::setHandler(std::function<void()> handler) { handler_ = std::move(handler); }

QSize PaintedButton::sizeHint() const { return minimumSize(); }

ButtonState PaintedButton::state() const
{
    return { .enabled = isEnabled(),
        .active = active_,
        .hovering = hovering_,
        .pressed = isDown(),
        .focused = hasFocus() };
}

void PaintedButton::setButtonKind(ButtonKind kind)
{
    kind_ = kind;
    update();
}

void PaintedButton::press()
{
    // A copy: the handler may delete the button, and itself with it.
    const auto handler = handler_;
    if (handler)
        handler();
}

void PaintedButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const ButtonLook look = buttonLook(kind_, state());
    const auto mode = appearanceOf(*this);
    const QRectF bounds = QRectF(rect());
    if (look.fill) {
        constexpr double inset = ButtonLook::fillInset;
        fillRounded(painter, bounds.adjusted(inset, inset, -inset, -inset), look.radius, look.fill->in(mode));
    }
    if (look.outline)
        outlineRounded(painter, bounds, look.radius, look.outline->in(mode));
    if (look.bar) {
        const QRectF bar(ButtonLook::barInset, height() - ButtonLook::barHeight,
            width() - 2 * ButtonLook::barInset, ButtonLook::barHeight);
        fillRounded(painter, snapped(painter, bar), ButtonLook::barRadius, look.bar->in(mode));
    }
    paintCaption(painter, look);
    if (look.ring)
        drawFocusRing(painter, bounds, ButtonLook::ringInset, look.ringRadius(), look.ring->in(mode));
}

void PaintedButton::paintCaption(QPainter& painter, const ButtonLook& look) const
{
    const QFont font
        = captionFont(ButtonLook::captionSize, static_cast<QFont::Weight>(static_cast<int>(look.weight)));
    const QFontMetricsF metrics(font);
    const double room = width() - 2 * ButtonLook::captionInset;
    QString shown = caption_;
    if (metrics.horizontalAdvance(shown) > room + sideBearings)
        shown = metrics.elidedText(shown, Qt::ElideRight, room);
    const double left = (width() - metrics.horizontalAdvance(shown)) / 2;
    // By this font alone: a glyph that another face lends stands on the same line.
    const double baseline = (height() - metrics.ascent() - metrics.descent()) / 2 + metrics.ascent();
    painter.setFont(font);
    painter.setPen(resolved(look.text, *this));
    painter.drawText(QPointF(left, baseline), shown);
}

void PaintedButton::enterEvent(QEnterEvent*) { setHovering(true); }

void PaintedButton::leaveEvent(QEvent*) { setHovering(false); }

void PaintedButton::hideEvent(QHideEvent* event)
{
    // The pointer's leaving isn't told to a view that is out of sight.
    setHovering(false);
    QAbstractButton::hideEvent(event);
}

void PaintedButton::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::EnabledChange) {
        if (isEnabled())
            setCursor(Qt::PointingHandCursor);
        else
            unsetCursor();
    }
    QAbstractButton::changeEvent(event);
}

void PaintedButton::keyPressEvent(QKeyEvent* event)
{
    constexpr auto chords = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    if (!isPressKey(*event) || event->modifiers() & chords) {
        // Arrows and digits are for the views around it.
        event->ignore();
        return;
    }
    // A key that is held down presses once.
    if (!event->isAutoRepeat())
        click();
}

void PaintedButton::keyReleaseEvent(QKeyEvent* event)
{
    if (!isPressKey(*event))
        event->ignore();
}

void PaintedButton::setHovering(bool hovering)
{
    if (hovering_ == hovering)
        return;
    hovering_ = hovering;
    update();
}

} // namespace ostrel
