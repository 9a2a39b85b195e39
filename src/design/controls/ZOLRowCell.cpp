// SPDX-License-Identifier: Apache-2.0
#include "design/controls/ZOLRowCell.h"

#include "design/Accessibility.h"
#include "design/Appearance.h"
#include "design/Keys.h"
#include "design/Paint.h"
#include "design/ZOLAppMarkView.h"
#include "design/ZOLAppShellStyle.h"
#include "design/controls/ShellRow.h"
#include "design/controls/ShellViews.h"
#include "design/controls/ZOLShellLabel.h"

#include <QFontMetricsF>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <utility>

namespace ostrel {

namespace {

namespace Shell = ZOLAppShellStyle;

constexpr int sideMargin = 8;
constexpr int endMargin = 6;
constexpr int partSpacing = 10;
constexpr double titleSize = 12;
constexpr double barWidth = 2;
constexpr double letterRadius = 4;
constexpr double letterSize = 10;
constexpr double ringInset = 2;
constexpr int titleResistance = 750;
constexpr int subtitleResistance = 500;
constexpr int reasonResistance = 250;

/// The light square that a mark stands on: a plate of the shell's radius would be a disc at this size.
class MarkPlate final : public QWidget {
public:
    explicit MarkPlate(ZOLAppMark mark)
    {
        auto* view = new ZOLAppMarkView(mark, Shell::rowMarkSize, this);
        setFixedSize(view->sizeHint());
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        fillRounded(painter, QRectF(rect()), letterRadius, Shell::plate);
    }
};

QWidget* leadingView(const ZOLRowCell::Leading& leading)
{
    if (const auto* mark = std::get_if<ZOLAppMark>(&leading))
        return new MarkPlate(*mark);
    return new ZOLRowLetterView(std::get<QString>(leading));
}

} // namespace

ZOLRowLetterView::ZOLRowLetterView(QString letter, QWidget* parent)
    : QWidget(parent)
    , letter_(std::move(letter))
{
    setFixedSize(int(Shell::rowMarkSize), int(Shell::rowMarkSize));
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void ZOLRowLetterView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    fillRounded(painter, QRectF(rect()), letterRadius, Shell::data.in(appearanceOf(*this)));
    const QFont font = Shell::font(letterSize, QFont::Medium);
    const QFontMetricsF metrics(font);
    painter.setFont(font);
    painter.setPen(resolved(Shell::ink, *this));
    painter.drawText(QPointF((width() - metrics.horizontalAdvance(letter_)) / 2,
                         (height() - metrics.ascent() - metrics.descent()) / 2 + metrics.ascent()),
        letter_);
}

ZOLRowCell::ZOLRowCell(
    const Leading& leading, const Texts& texts, int width, std::function<void()> handler, QWidget* parent)
    : QAbstractButton(parent)
    , texts_(texts)
    , handler_(std::move(handler))
{
    setAccessibleRole(*this, handler_ ? QAccessible::Button : QAccessible::Row);
    setAccessibleSelected(*this, false);
    QStringList told { texts.title, texts.subtitle, texts.reason };
    told.removeAll(QString());
    setAccessibleName(told.join(" · "));
    setFixedSize(width, int(Shell::rowHeight));
    setFocusPolicy(handler_ ? Qt::TabFocus : Qt::NoFocus);
    if (handler_)
        setCursor(Qt::PointingHandCursor);
    auto* row = new ShellRow(this, partSpacing);
    row->setContentsMargins(sideMargin, endMargin, sideMargin, endMargin);
    row->add(leadingView(leading));
    const auto add = [row](const QString& text, double size, QFont::Weight weight, const ThemedColor& color,
                         int resistance) {
        if (text.isEmpty())
            return;
        ZOLShellLabel* label = Shell::label(text, size, weight, color);
        label->setMaximumLines(1);
        row->add(label, resistance);
    };
    add(texts.title, titleSize, QFont::Medium, Shell::ink, titleResistance);
    add(texts.subtitle, Shell::footerSize(), QFont::Normal, Shell::muted, subtitleResistance);
    row->add(Shell::spacer());
    add(texts.reason, Shell::footerSize(), QFont::Normal, Shell::muted, reasonResistance);
    connect(this, &QAbstractButton::clicked, this, [this] { press(); });
}

void ZOLRowCell::setSelected(bool selected)
{
    if (selected_ == selected)
        return;
    selected_ = selected;
    setAccessibleSelected(*this, selected);
    update();
}

void ZOLRowCell::press()
{
    // A copy: the handler may delete the row, and itself with it.
    const auto handler = handler_;
    if (handler)
        handler();
}

void ZOLRowCell::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const auto mode = appearanceOf(*this);
    const QRectF bounds = QRectF(rect());
    if (selected_ || hovering_)
        painter.fillRect(bounds, qColor((selected_ ? Shell::selected : Shell::hover).in(mode)));
    const double line = hairline(painter);
    const QRectF whole = snapped(painter, bounds);
    drawRule(
        painter, QRectF(whole.left(), whole.bottom() - line, whole.width(), line), Shell::divider.in(mode));
    if (selected_)
        painter.fillRect(snapped(painter, QRectF(0, 0, barWidth, height())), qColor(Shell::signal.in(mode)));
    if (hasFocus())
        drawFocusRing(painter, bounds, ringInset, Shell::controlRadius() - ringInset, Shell::ink.in(mode));
}

void ZOLRowCell::mousePressEvent(QMouseEvent* event)
{
    if (handler_ && event->button() == Qt::LeftButton)
        click();
    else
        event->ignore();
}

void ZOLRowCell::mouseReleaseEvent(QMouseEvent* event)
{
    if (!handler_ || event->button() != Qt::LeftButton)
        event->ignore();
}

void ZOLRowCell::keyPressEvent(QKeyEvent* event)
{
    if (!handler_ || !isPressKey(*event))
        event->ignore();
    else if (!event->isAutoRepeat())
        click();
}

void ZOLRowCell::keyReleaseEvent(QKeyEvent* event)
{
    if (!handler_ || !isPressKey(*event))
        event->ignore();
}

void ZOLRowCell::enterEvent(QEnterEvent*) { setHovering(true); }

void ZOLRowCell::leaveEvent(QEvent*) { setHovering(false); }

void ZOLRowCell::hideEvent(QHideEvent* event)
{
    setHovering(false);
    QAbstractButton::hideEvent(event);
}

void ZOLRowCell::setHovering(bool hovering)
{
    if (hovering_ == hovering)
        return;
    hovering_ = hovering;
    update();
}

} // namespace ostrel
