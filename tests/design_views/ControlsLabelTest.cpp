// SPDX-License-Identifier: Apache-2.0
#include "design_views/ViewBench.h"

#include "design/Fonts.h"
#include "design/OstrelStyle.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"

#include "support/TemporaryFolder.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QRawFont>
#include <QTextLayout>
#include <QToolTip>
#include <QVBoxLayout>
#include <QtEndian>

#include <cmath>
#include <fstream>

namespace {

using namespace ostrel;
using enum ZOLThemePolicy::Mode;

std::unique_ptr<ZOLShellLabel> made(const QString& text, int lines, int width)
{
    auto label = std::make_unique<ZOLShellLabel>(text, OstrelStyle::mono(10), OstrelStyle::ink);
    label->setMaximumLines(lines);
    label->resize(width, 13);
    return label;
}

constexpr int letter = 6; // at ten points

TEST(ZOLShellLabel, CutsItsTextToTheLinesThatItMayHave)
{
    const std::tuple<const char*, int, int, QStringList, bool> rows[] {
        // text, lines that it may have, letters that fit, what is shown, whether that isn't all
        { "one two three", 0, 8, { "one two", "three" }, false },
        { "one two    three", 0, 8, { "one two", "three" }, false },
        { "extraordinarily", 0, 6, { "extrao", "rdinar", "ily" }, false },
        { "one two three", 2, 8, { "one two", "three" }, false },
        { "one two three four", 2, 8, { "one two", "three f…" }, true },
        { "one\ntwo\nthree", 2, 8, { "one", "two…" }, true },
        { "one\n\ntwo", 0, 8, { "one", "", "two" }, false },
        { "one\ntwo", 1, 8, { "one…" }, true },
        { "one two three", 1, 8, { "one two…" }, true },
        { "one two", 1, 7, { "one two" }, false },
        { "one two", 1, 1, { "…" }, true },
        { "", 0, 8, { "" }, false },
        { "", 1, 8, { "" }, false },
        { "", 2, 8, { "" }, false },
        { "tail  ", 1, 8, { "tail  " }, false },
    };
    for (const auto& [text, lines, letters, shown, cut] : rows) {
        const auto label = made(text, lines, letters * letter);
        SCOPED_TRACE(testing::Message() << '"' << text << "\" in " << lines << " lines of " << letters);
        EXPECT_EQ(label->shownLines(), shown) << label->shownLines().join('|').toStdString();
        EXPECT_EQ(label->isCut(), cut);
        EXPECT_EQ(label->text(), text);
        if (lines != 1) {
            EXPECT_EQ(label->heightForWidth(letters * letter), 13 * shown.size());
        }
    }
}

TEST(ZOLShellLabel, EndsAtEveryWidthAndStaysWithinItWhereItElides)
{
    for (const char* text : { "", " ", "\n\n", "word", "a long line of many words ●○◉□■△▲▼⌘⌥⇧⌃↗",
             "averyverylongword", "日本 👩‍👩‍👧 é" })
        for (const int lines : { 0, 1, 2, 5 })
            for (int width = -3; width < 90; ++width) {
                const auto label = made(text, lines, std::max(0, width));
                const QStringList shown = label->shownLines();
                EXPECT_GE(shown.size(), 1);
                EXPECT_TRUE(lines == 0 || shown.size() <= lines);
                EXPECT_GE(label->heightForWidth(width), lines == 1 ? -1 : 13);
                const double last = QFontMetricsF(label->font()).horizontalAdvance(shown.back().trimmed());
                EXPECT_TRUE(lines != 1 || last <= label->width()) << text << " " << width;
            }
}

TEST(ZOLShellLabel, IsAsHighAsItsFontSaysAndShowsBorrowedGlyphsWhole)
{
    const auto ink = [](ZOLShellLabel& view, QSize size) {
        view.resize(size);
        const QImage seen = rendered(view, 2);
        qint64 all = 0;
        for (int y = 0; y < seen.height(); ++y)
            for (int x = 0; x < seen.width(); ++x)
                all += 255 - qGray(seen.pixel(x, y));
        return all;
    };
    for (const int size : { 10, 11, 12, 14, 20 })
        for (const QChar glyph : QString("●○◉□■△▲▼⌘⌥⇧⌃↗gÅ|")) {
            ZOLShellLabel label(glyph, OstrelStyle::mono(size), OstrelStyle::ink);
            setAppearance(label, light);
            label.setAlignment(Qt::AlignCenter);
            SCOPED_TRACE(testing::Message() << size << " " << QString(glyph).toStdString());
            QTextLayout layout(glyph, label.font());
            layout.beginLayout();
            layout.createLine();
            layout.endLayout();
            for (const QGlyphRun& run : layout.glyphRuns())
                EXPECT_FALSE(run.glyphIndexes().contains(0U)) << "no face has it";
            EXPECT_EQ(label.sizeHint().height(), int(std::ceil(size * 1.3)));
            const QSize tight = label.sizeHint() + QSize(4, 0);
            EXPECT_EQ(ink(label, tight), ink(label, tight + QSize(0, 20))) << "cut off above or below";
        }
}

TEST(ZOLShellLabel, SharesAColumnByTheHeightThatItPaints)
{
    QWidget page;
    auto* column = new QVBoxLayout(&page);
    column->setContentsMargins(0, 0, 0, 0);
    auto* label = wrappingLabel("one two three four", 10, QFont::Normal, OstrelStyle::ink, 8 * letter);
    column->addWidget(label);
    column->addStretch(1);
    page.resize(200, 200);
    column->activate();
    EXPECT_EQ(label->height(), 13 * 3);
    label->setMaximumLines(2);
    column->activate();
    EXPECT_EQ(label->height(), 13 * 2);
}

TEST(TabLayout, ABoxHoldsItsContentInsideItsInsets)
{
    PanelBox box(200);
    auto* first = section("caption", box.contentWidth());
    auto* button = actionButton("Go", 60, {});
    auto* rule = separator();
    for (QWidget* view : std::initializer_list<QWidget*> { first, button, rule })
        box.add(view);
    box.resize(box.sizeHint());
    box.layout()->activate();
    EXPECT_EQ(first->geometry(), QRect(14, 12, 172, 13)) << "ten points are the smallest text";
    EXPECT_EQ(button->geometry(), QRect(14, 30, 60, 44));
    EXPECT_EQ(rule->geometry(), QRect(14, 79, 172, 1));
    EXPECT_EQ(box.height(), 92);
    setAppearance(box, dark);
    const QImage seen = rendered(box);
    EXPECT_TRUE(near(seen.pixel(100, 0), OstrelStyle::fill.dark)) << "no border";
    EXPECT_TRUE(near(seen.pixel(0, 0), OstrelStyle::bg.dark)) << "round corners";
}

TEST(TabLayout, APairKeepsItsValueAtTheRightEdgeAndCutsTheLongerOne)
{
    for (const auto& [label, value, labelCut, valueCut] : { std::tuple { 5, 5, false, false },
             { 60, 5, true, false }, { 5, 60, false, true }, { 60, 60, true, true } }) {
        const std::unique_ptr<KeyValueRow> row(kvRow("", "", 300));
        row->label()->setText(QString(label, 'l'));
        row->value()->setText(QString(value, 'v'));
        row->layout()->activate();
        SCOPED_TRACE(testing::Message() << label << " " << value);
        EXPECT_EQ(row->label()->isCut(), labelCut);
        EXPECT_EQ(row->value()->isCut(), valueCut);
        EXPECT_EQ(row->value()->geometry().right(), 299);
        EXPECT_EQ(row->label()->x(), 0);
        EXPECT_LE(row->label()->geometry().right() + 8, row->value()->x());
    }
}

/// The PostScript name that a font file gives itself: entry 6 of its table of names, in UTF-16.
std::string faceName(const QFont& font)
{
    const QByteArray table = QRawFont::fromFont(font).fontTable("name");
    const auto word = [&](int at) { return int { qFromBigEndian<quint16>(table.constData() + at) }; };
    for (int entry = 0; table.size() >= 6 && entry < word(2); ++entry) {
        const int record = 6 + 12 * entry;
        if (word(record) != 3 || word(record + 6) != 6)
            continue;
        std::string name;
        for (int at = 0; at < word(record + 8); at += 2)
            name += static_cast<char>(word(word(4) + word(record + 10) + at));
        return name;
    }
    return {};
}

TEST(OstrelStyle, EachWeightTakesItsOwnFaceAndNoTextIsBelowTenPoints)
{
    const std::tuple<double, QFont::Weight, const char*, int> cases[] { { 8, QFont::Normal, "IBMPlexMono",
                                                                            10 },
        { 11, QFont::Thin, "IBMPlexMono", 11 }, { 12, QFont::Medium, "IBMPlexMono-Medm", 12 },
        { 24, QFont::DemiBold, "IBMPlexMono-SmBld", 24 }, { 9.9, QFont::Black, "IBMPlexMono-SmBld", 10 } };
    for (const auto& [size, weight, face, pixels] : cases) {
        const QFont font = OstrelStyle::mono(size, weight);
        EXPECT_EQ(faceName(font), face) << size;
        EXPECT_EQ(font.pixelSize(), pixels);
    }
    EXPECT_EQ(plexMono(8).pixelSize(), 8);
    EXPECT_EQ(faceName(QToolTip::font()), "IBMPlexMono") << "tooltips follow";
}

TEST(PlexFaces, WithoutItsFilesTheSystemsMonospacedFontStandsIn)
{
    TemporaryFolder folder;
    std::ofstream(folder.path() + "/plex-mono-400.ttf") << "no font at all";
    const PlexFaces none = PlexFaces::registered(QString::fromStdString(folder.path()));
    const QFont font = none.font(12, QFont::DemiBold);
    EXPECT_EQ(font.family(), QFontDatabase::systemFont(QFontDatabase::FixedFont).family());
    EXPECT_EQ(font.weight(), QFont::DemiBold);
    EXPECT_EQ(font.pixelSize(), 12);
}

} // namespace
