// SPDX-License-Identifier: Apache-2.0
#include "design/controls/ZOLShellLabel.h"

#include "design/Appearance.h"

#include <QEvent>
#include <QFontMetricsF>
#include <QHelpEvent>
#include <QPainter>
#include <QStringList>
#include <QTextLayout>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace ostrel {

/// A text cut into what each line shows.
struct ZOLShellLabel::Lines {
    QStringList texts;
    bool cut = false; ///< not all of the text is shown
    double widest = 0;
};

ZOLShellLabel::ZOLShellLabel(
    const QString& text, const QFont& font, const ThemedColor& color, QWidget* parent)
    : QLabel(parent)
    , color_(color)
{
    setTextFormat(Qt::PlainText);
    setFont(font);
    setText(text);
    showColor();
}

void ZOLShellLabel::setColor(const ThemedColor& color)
{
    color_ = color;
    showColor();
}

void ZOLShellLabel::setMaximumLines(int lines)
{
    maximumLines_ = lines;
    setWordWrap(lines != 1);
    if (lines == 1)
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    updateGeometry();
    update();
}

int ZOLShellLabel::lineHeight() const
{
    // A face that lends a glyph may be higher; the line isn't.
    return static_cast<int>(std::ceil(QFontMetricsF(font()).height()));
}

ZOLShellLabel::Lines ZOLShellLabel::broken(int width) const
{
    const QFontMetricsF metrics(font());
    Lines lines;
    for (const QString& paragraph : text().split('\n')) {
        if (!wordWrap()) {
            lines.texts.push_back(paragraph);
            continue;
        }
        QTextLayout layout(paragraph, font());
        QTextOption option;
        option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        layout.setTextOption(option);
        layout.beginLayout();
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            line.setLineWidth(std::max(1, width));
            lines.texts.push_back(paragraph.mid(line.textStart(), line.textLength()));
            if (maximumLines_ > 0 && lines.texts.size() > maximumLines_)
                break;
        }
        layout.endLayout();
        if (paragraph.isEmpty())
            lines.texts.push_back({});
        if (maximumLines_ > 0 && lines.texts.size() > maximumLines_)
            break;
    }
    if (maximumLines_ > 0) {
        lines.cut = lines.texts.size() > maximumLines_;
        QString rest = lines.texts.mid(maximumLines_ - 1).join(QString());
        lines.texts = lines.texts.mid(0, maximumLines_ - 1);
        lines.cut = lines.cut || metrics.horizontalAdvance(rest) > width;
        if (lines.cut)
            rest = metrics.elidedText(rest + QChar(0x2026), Qt::ElideRight, width);
        lines.texts.push_back(rest);
    }
    for (const QString& line : lines.texts)
        lines.widest = std::max(lines.widest, metrics.horizontalAdvance(line));
    return lines;
}

QSize ZOLShellLabel::sizeHint() const
{
    if (wordWrap())
        return QLabel::sizeHint();
    const QFontMetricsF metrics(font());
    double width = 0;
    const QStringList lines = text().split('\n');
    for (const QString& line : lines)
        width = std::max(width, metrics.horizontalAdvance(line));
    const QMargins around = contentsMargins();
    return { static_cast<int>(std::ceil(width)) + around.left() + around.right(),
        lineHeight() * static_cast<int>(lines.size()) + around.top() + around.bottom() };
}

QSize ZOLShellLabel::minimumSizeHint() const
{
    if (wordWrap())
        return { 0, lineHeight() };
    return maximumLines_ == 1 ? QSize(0, lineHeight()) : sizeHint();
}

bool ZOLShellLabel::hasHeightForWidth() const { return wordWrap(); }

int ZOLShellLabel::heightForWidth(int width) const
{
    if (!wordWrap())
        return -1;
    const QMargins around = contentsMargins();
    const auto lines = broken(width - around.left() - around.right()).texts.size();
    return static_cast<int>(lines) * lineHeight() + around.top() + around.bottom();
}

void ZOLShellLabel::changeEvent(QEvent* event)
{
    QLabel::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        showColor();
}

bool ZOLShellLabel::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty() && maximumLines_ > 0
        && broken(contentsRect().width()).cut) {
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), text().toHtmlEscaped(), this);
        return true;
    }
    return QLabel::event(event);
}

void ZOLShellLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setPen(resolved(color_, *this));
    painter.setFont(font());
    const QRect inside = contentsRect();
    const QStringList lines = broken(inside.width()).texts;
    const int height = lineHeight();
    const int all = height * static_cast<int>(lines.size());
    int top = inside.top();
    if (alignment() & Qt::AlignVCenter)
        top += (inside.height() - all) / 2;
    else if (alignment() & Qt::AlignBottom)
        top += inside.height() - all;
    const int across = static_cast<int>(alignment() & Qt::AlignHorizontal_Mask);
    const double ascent = QFontMetricsF(font()).ascent();
    for (const QString& line : lines) {
        const double width = QFontMetricsF(font()).horizontalAdvance(line);
        double left = inside.left();
        if (across & Qt::AlignRight)
            left += inside.width() - width;
        else if (across & Qt::AlignHCenter)
            left += (inside.width() - width) / 2;
        painter.drawText(QPointF(left, top + std::round(ascent)), line);
        top += height;
    }
}

void ZOLShellLabel::showColor()
{
    // The toolkit and assistive technology read it from here; painting asks anew.
    const QColor color = resolved(color_, *this);
    if (palette().color(QPalette::WindowText) != color) {
        QPalette own;
        own.setColor(QPalette::WindowText, color);
        setPalette(own);
    }
}

} // namespace ostrel
