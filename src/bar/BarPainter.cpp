// SPDX-License-Identifier: Apache-2.0
#include "bar/BarPainter.h"

#include "bar/BarMark.h"
#include "design/Fonts.h"
#include "design/StillImage.h"
#include "design/Utf8.h"
#include "design/ZOLAppMarkView.h"

#include <QFontMetricsF>
#include <QHash>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace ostrel {

namespace {

constexpr double titleSize = 11; ///< in points
constexpr double titleKerning = 0.2; ///< in points, after each character
constexpr double barHeight = 24; ///< of the bar that these sizes are meant for, in points

/// A place this much wider than high takes the whole face, if that fits.
constexpr double wideShape = 1.6;

/// Figures are scaled from outlines of this size, so that none of their edges depends on a size's hinting.
constexpr double outlineSize = 100;
/// A character of eight pixels' size is this wide; narrower ones are told from one another no more.
constexpr double narrowestCharacter = 4.8;
/// How high a lone figure is, of the whole.
constexpr double loneFigure = 0.6;

QFont titleFont()
{
    QFont font = plexMono(titleSize, QFont::Medium);
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setLetterSpacing(QFont::AbsoluteSpacing, titleKerning);
    return font;
}

/// The outlines of figures in the heaviest face there is, kept since a bar draws the same few over and over.
/// No font is kept with them: it would outlive the application object.
class FigureOutlines {
public:
    [[nodiscard]] static QPainterPath of(const QString& text)
    {
        static FigureOutlines outlines;
        QPainterPath path;
        for (qsizetype at = 0; at < text.size(); ++at)
            path.addPath(outlines.glyph(text[at]).translated(static_cast<double>(at) * outlines.advance_, 0));
        return path;
    }

private:
    static QFont font()
    {
        QFont face = plexMono(outlineSize, QFont::DemiBold);
        face.setHintingPreference(QFont::PreferNoHinting);
        return face;
    }

    const QPainterPath& glyph(QChar character)
    {
        QPainterPath& path = glyphs_[character];
        if (path.isEmpty())
            path.addText(QPointF(), font(), character);
        return path;
    }

    double advance_ = QFontMetricsF(font()).horizontalAdvance('0');
    QHash<QChar, QPainterPath> glyphs_;
};

/// Draws in black, and then gives all of it the ink.
template <typename Draw>
platform::Image inked(int width, int height, std::uint32_t ink, Draw draw)
{
    StillImage still = StillImage::sized(width, height, 1);
    QPainter painter(&still.image);
    painter.setRenderHint(QPainter::Antialiasing);
    draw(painter);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(still.image.rect(), QColor::fromRgb(ink));
    painter.end();
    return platformImage(still.image);
}

/// The mark in the middle of the rectangle, whose corner lies on a whole pixel.
void drawMark(QPainter& painter, const QRectF& rect)
{
    const platform::Image mark = barMark(static_cast<int>(rect.width()), static_cast<int>(rect.height()), 0);
    // The ink comes later: its shape is all that counts.
    const QImage image(reinterpret_cast<const uchar*>(mark.pixels.data()), mark.width, mark.height,
        qsizetype { mark.width } * qsizetype { sizeof(std::uint32_t) }, QImage::Format_ARGB32);
    painter.drawImage(rect.topLeft(), image);
}

class MarkPicture final : public platform::StatusItemPicture {
public:
    [[nodiscard]] platform::Image draw(int width, int height, std::uint32_t ink) const override
    {
        return barMark(width, height, ink);
    }
    [[nodiscard]] std::string key() const override { return "mark"; }
};

/// A figure without its sign or its decimals.
QString shortened(const QString& figure) { return figure.section('.', 0, 0).remove('%'); }

class ValuePicture final : public platform::StatusItemPicture {
public:
    explicit ValuePicture(BarValues values)
        : values_(std::move(values))
    {
    }

    [[nodiscard]] platform::Image draw(int width, int height, std::uint32_t ink) const override
    {
        return inked(width, height, ink, [=, this](QPainter& painter) {
            if (width < wideShape * height || !drawWide(painter, width, height))
                drawSquare(painter, width, height);
        });
    }

    [[nodiscard]] std::string key() const override
    {
        return fmt::format("{}|{}|{}", values_.mark, values_.title, fmt::join(values_.figures, " "));
    }

private:
    /// Mark and text in a row; false, with nothing drawn, where they don't fit.
    bool drawWide(QPainter& painter, double width, double height) const
    {
        const double scale = height / barHeight;
        const QFont font = titleFont();
        const QFontMetricsF metrics(font);
        const QString title = utf16(values_.title);
        const double mark = values_.mark ? ZOLAppMarkView::menuBarSize * scale : 0;
        const double whole = mark + metrics.horizontalAdvance(title) * scale;
        if (whole > width)
            return false;
        const double left = std::floor((width - whole) / 2);
        const double top = std::round((height - mark) / 2);
        if (values_.mark)
            drawMark(painter, QRectF(left, top, mark, mark));
        // Capitals and figures stand in the middle, on a whole pixel.
        const double baseline = std::round((height + metrics.capHeight() * scale) / 2);
        painter.save();
        painter.translate(left + mark, baseline);
        painter.scale(scale, scale);
        painter.setFont(font);
        painter.drawText(QPointF(), title);
        painter.restore();
        return true;
    }

    void drawSquare(QPainter& painter, double width, double height) const
    {
        const double side = std::min(width, height);
        const double top = std::floor((height - side) / 2);
        const double gap = std::max(2.0, std::round(side / 12));
        const double row = std::floor((side - gap) / 2);
        if (values_.figures.size() > 1) {
            drawFigure(painter, values_.figures[0], { 0, top, width, row });
            drawFigure(painter, values_.figures[1], { 0, top + side - row, width, row });
        } else if (values_.figures.size() == 1 && values_.mark) {
            drawMark(painter, QRectF(0, top, width, side - row - gap / 2));
            drawFigure(painter, values_.figures[0], { 0, top + side - row, width, row });
        } else if (values_.figures.size() == 1) {
            const double high = std::round(side * loneFigure);
            drawFigure(painter, values_.figures[0], { 0, top + std::floor((side - high) / 2), width, high });
        }
    }

    /// As high as the rectangle, in its middle, and narrower than the face is where it wouldn't fit.
    static void drawFigure(QPainter& painter, const std::string& figure, const QRectF& rect)
    {
        QString text = utf16(figure);
        if (rect.width() < static_cast<double>(text.size()) * narrowestCharacter)
            text = shortened(text);
        // Round figures stand a little over the others at both ends.
        static const QRectF tallest = FigureOutlines::of("0%").boundingRect();
        const QPainterPath outline = FigureOutlines::of(text);
        const QRectF bounds = outline.boundingRect();
        const double scale = rect.height() / tallest.height();
        const double narrowed = std::min(scale, rect.width() / bounds.width());
        QTransform place;
        place.translate(rect.center().x(), rect.bottom());
        place.scale(narrowed, scale);
        place.translate(-bounds.center().x(), -tallest.bottom());
        painter.fillPath(place.map(outline), Qt::black);
    }

    BarValues values_;
};

} // namespace

BarPainter::BarPainter()
    : mark_(std::make_shared<MarkPicture>())
{
}

double BarPainter::titleWidth(std::string_view title) const
{
    return title.empty() ? 0 : QFontMetricsF(titleFont()).horizontalAdvance(utf16(title));
}

BarArtist::Picture BarPainter::valuePicture(const BarValues& values) const
{
    return std::make_shared<ValuePicture>(values);
}

} // namespace ostrel
