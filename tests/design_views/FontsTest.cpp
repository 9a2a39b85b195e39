// SPDX-License-Identifier: Apache-2.0
#include "design/Fonts.h"

#include "support/TemporaryFolder.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QRawFont>
#include <QTextLayout>
#include <QToolTip>
#include <QtEndian>

#include <fstream>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

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

TEST(OstrelStyle, BorrowedGlyphsStayWithinTheLine)
{
    for (const double size : { 10.0, 11.0, 14.0, 24.0 }) {
        const QFont font = OstrelStyle::mono(size);
        QTextLayout layout(QString::fromUtf8("●○◉□■△▲▼⌘⌥⇧⌃↗"), font);
        layout.beginLayout();
        const QTextLine line = layout.createLine();
        layout.endLayout();
        const QFontMetricsF metrics(font);
        EXPECT_LE(line.ascent(), std::ceil(metrics.ascent())) << size;
        EXPECT_LE(line.descent(), std::ceil(metrics.descent())) << size;
        for (const QGlyphRun& run : layout.glyphRuns())
            for (const quint32 glyph : run.glyphIndexes()) {
                EXPECT_NE(glyph, 0U) << "a glyph is missing in " << run.rawFont().familyName().toStdString();
                const QRectF ink = run.rawFont().boundingRect(glyph);
                EXPECT_LE(-ink.top(), std::ceil(metrics.ascent()));
                EXPECT_LE(ink.bottom(), std::ceil(metrics.descent()));
            }
    }
}

} // namespace
