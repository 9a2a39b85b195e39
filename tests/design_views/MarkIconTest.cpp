// SPDX-License-Identifier: Apache-2.0
#include "design/ZOLAppMark.h"
#include "design/ZOLAppMarkView.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include <QImage>
#include <QPainter>
#include <QPainterPath>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

/// The path of a small drawing, of the four absolute commands that it uses.
QPainterPath pathIn(const std::string& drawing)
{
    const auto from = drawing.find(" d=\"") + 4;
    std::istringstream words(drawing.substr(from, drawing.find('"', from) - from));
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    std::array<double, 6> at {};
    for (char command = 0; words >> command;) {
        for (int figure = 0; figure < (command == 'C' ? 6 : command == 'Z' ? 0 : 2); ++figure)
            words >> at.at(static_cast<std::size_t>(figure));
        if (command == 'M')
            path.moveTo(at[0], at[1]);
        else if (command == 'L')
            path.lineTo(at[0], at[1]);
        else if (command == 'C')
            path.cubicTo(at[0], at[1], at[2], at[3], at[4], at[5]);
        else
            path.closeSubpath();
    }
    return path;
}

TEST(MarkIcon, TheIconThemesFileShowsTheMarkAsItIsDrawn)
{
    std::ifstream file(
        OSTREL_SOURCE "/resources/icons/hicolor/scalable/status/dev.quent.ostrel-symbolic.svg");
    const std::string drawing((std::istreambuf_iterator(file)), {});
    ASSERT_NE(drawing.find("viewBox=\"0 0 48 48\""), std::string::npos);
    constexpr int side = 192;
    QImage shown(side, side, QImage::Format_ARGB32_Premultiplied);
    shown.fill(Qt::transparent);
    QImage wanted = shown;
    QPainter iconPainter(&shown);
    iconPainter.setRenderHint(QPainter::Antialiasing);
    iconPainter.scale(side / ZOLAppMarks::canvas, side / ZOLAppMarks::canvas);
    iconPainter.fillPath(pathIn(drawing), Qt::black);
    iconPainter.end();
    QPainter markPainter(&wanted);
    ZOLAppMarkView::draw(markPainter, ZOLAppMark::ostrel, QRectF(0, 0, side, side), true);
    markPainter.end();
    // Two ways to draw a soft edge differ by a shade, and where two lines cross.
    int most = 0;
    int different = 0;
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            const int by = std::abs(qAlpha(shown.pixel(x, y)) - qAlpha(wanted.pixel(x, y)));
            most = std::max(most, by);
            different += by > 40 ? 1 : 0;
        }
    EXPECT_LE(different, 12) << "the largest difference is " << most << " of 255";
}

} // namespace
