// SPDX-License-Identifier: Apache-2.0
#include "design/controls/ZOLShellLabel.h"

#include "design/Appearance.h"

#include <QEvent>
#include <QFontMetricsF>
#include <QHelpEvent>
#include <QPainter>
#include <QTextDocument>
#include <QTextLayout>
#include <QToolTip>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace ostrel {

namespace {

constexpr QChar newline = '\n';
const QString ellipsis(QChar(0x2026));

/// How wide a text that breaks between words would like to be at most, in letters.
constexpr int comfortableLetters = 80;

/// A line's part of the text.
struct Span {
    qsizetype start = 0;
    qsizetype length = 0;
};

/// Cuts one paragraph into lines that fit; stops with `limit` lines more, unless that is 0.
void breakParagraph(const QString& text, Span paragraph, const QFont& font, int width, qsizetype limit,
    std::vector<Span>& lines)
{
    QTextLayout layout(text.mid(paragraph.start, paragraph.length), font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    qsizetype made = 0;
    for (QTextLine line = layout.createLine(); line.isValid() && (limit == 0 || made < limit);
         line = layout.createLine()) {
        // A line takes one letter at least, so this ends at every width.
        line.setLineWidth(std::max(1, width));
        lines.push_back({ paragraph.start + line.textStart(), line.textLength() });
        ++made;
    }
    layout.endLayout();
    if (made == 0)
        lines.push_back(paragraph);
}

QString withoutTrailingBlanks(QString text)
{
    while (text.endsWith(' '))
        text.chop(1);
    return text;
}

/// The text with an ellipsis, as much of it as fits; nothing where not even that does.
QString ending(const QString& text, const QFontMetricsF& metrics, int width)
{
    // The toolkit's smallest length: without it a text that fits to the letter loses one.
    constexpr double slack = 1.0 / 64;
    if (metrics.horizontalAdvance(ellipsis) > width)
        return {};
    return metrics.elidedText(text + ellipsis, Qt::ElideRight, width + slack);
}

double widest(const QString& text, const QFont& font)
{
    const QFontMetricsF metrics(font);
    double width = 0;
    for (const QString& line : text.split(newline))
        width = std::max(width, metrics.horizontalAdvance(line));
    return width;
}

} // namespace

QString plainToolTip(const QString& text)
{
    // The toolkit breaks lines of markup alone, and not at blanks that are kept.
    const bool wide = text.size() > comfortableLetters;
    return wide || Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text, Qt::WhiteSpaceNormal) : text;
}

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
    update();
}

void ZOLShellLabel::setMaximumLines(int lines)
{
    maximumLines_ = std::max(0, lines);
    if (maximumLines_ == 1)
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    else
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    setWordWrap(maximumLines_ != 1);
    updateGeometry();
    update();
}

int ZOLShellLabel::lineHeight() const
{
    // A face that lends a glyph may be higher; the line isn't.
    return static_cast<int>(std::ceil(QFontMetricsF(font()).height()));
}

const ZOLShellLabel::Lines& ZOLShellLabel::broken(int width) const
{
    LinesKey key { text(), font(), width, maximumLines_, wordWrap() };
    if (key != brokenFor_) {
        broken_ = breakIn(width);
        brokenFor_ = std::move(key);
    }
    return broken_;
}

double ZOLShellLabel::naturalWidth() const
{
    LinesKey key { text(), font() };
    if (key != measuredFor_) {
        measured_ = widest(key.text, key.font);
        measuredFor_ = std::move(key);
    }
    return measured_;
}

ZOLShellLabel::Lines ZOLShellLabel::breakIn(int width) const
{
    const QString whole = text();
    // One line more than are shown tells whether the last of them is cut.
    const qsizetype limit = maximumLines_ > 0 ? maximumLines_ + 1 : 0;
    std::vector<Span> spans;
    for (qsizetype start = 0; start <= whole.size() && (limit == 0 || std::ssize(spans) < limit);) {
        const qsizetype found = whole.indexOf(newline, start);
        const qsizetype end = found < 0 ? whole.size() : found;
        if (wordWrap())
            breakParagraph(whole, { start, end - start }, font(), width,
                limit == 0 ? 0 : limit - std::ssize(spans), spans);
        else
            spans.push_back({ start, end - start });
        start = end + 1;
    }

    const QFontMetricsF metrics(font());
    const auto shown
        = maximumLines_ > 0 ? std::min<qsizetype>(std::ssize(spans), maximumLines_) : std::ssize(spans);
    Lines lines;
    for (qsizetype at = 0; at < shown; ++at) {
        const auto [start, length] = spans[static_cast<std::size_t>(at)];
        const bool broken = start + length < whole.size() && whole[start + length] != newline;
        const QString line = whole.mid(start, length);
        // The blanks at a break hang over the edge.
        lines.texts.push_back(broken ? withoutTrailingBlanks(line) : line);
    }
    if (maximumLines_ == 0)
        return lines;
    const qsizetype start = spans[static_cast<std::size_t>(shown - 1)].start;
    const qsizetype found = whole.indexOf(newline, start);
    QString rest = whole.mid(start, found < 0 ? -1 : found - start);
    const bool overlong = !wordWrap() && metrics.horizontalAdvance(withoutTrailingBlanks(rest)) > width;
    lines.cut = overlong || std::ssize(spans) > shown;
    if (lines.cut)
        lines.texts.back() = ending(withoutTrailingBlanks(std::move(rest)), metrics, width);
    return lines;
}

QSize ZOLShellLabel::sizeHint() const
{
    if (minimumSize() == maximumSize())
        return minimumSize();
    if (wordWrap() && minimumWidth() == maximumWidth())
        return { minimumWidth(), heightForWidth(minimumWidth()) };
    const QMargins around = contentsMargins();
    const int beside = around.left() + around.right();
    int width = static_cast<int>(std::ceil(naturalWidth())) + beside;
    if (wordWrap()) {
        const double letter = QFontMetricsF(font()).averageCharWidth();
        width = std::min(width, static_cast<int>(std::ceil(letter * comfortableLetters)) + beside);
        width = std::clamp(width, minimumWidth(), std::max(minimumWidth(), maximumWidth()));
        return { width, heightForWidth(width) };
    }
    const int lines = maximumLines_ > 0 ? 1 : static_cast<int>(text().count(newline)) + 1;
    return { width, lineHeight() * lines + around.top() + around.bottom() };
}

QSize ZOLShellLabel::minimumSizeHint() const
{
    if (wordWrap() || maximumLines_ == 1)
        return { 0, lineHeight() };
    return sizeHint();
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
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty() && isCut()) {
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), plainToolTip(text()), this);
        return true;
    }
    return QLabel::event(event);
}

bool ZOLShellLabel::isCut() const { return maximumLines_ > 0 && broken(contentsRect().width()).cut; }

QStringList ZOLShellLabel::shownLines() const { return broken(contentsRect().width()).texts; }

void ZOLShellLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setPen(resolved(color_, *this));
    painter.setFont(font());
    const QRect inside = contentsRect();
    const QStringList lines = broken(inside.width()).texts;
    const int height = lineHeight();
    const int all = height * static_cast<int>(lines.size());
    double top = inside.top();
    if (alignment() & Qt::AlignVCenter)
        top += (inside.height() - all) / 2.0;
    else if (alignment() & Qt::AlignBottom)
        top += inside.height() - all;
    const QFontMetricsF metrics(font());
    const double baseline = (height - metrics.height()) / 2 + metrics.ascent();
    for (const QString& line : lines) {
        const double width = metrics.horizontalAdvance(line);
        double left = inside.left();
        if (alignment() & Qt::AlignRight)
            left += inside.width() - width;
        else if (alignment() & Qt::AlignHCenter)
            left += (inside.width() - width) / 2;
        painter.drawText(QPointF(left, top + baseline), line);
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
