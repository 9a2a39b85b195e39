// SPDX-License-Identifier: Apache-2.0
#include "design_views/ViewBench.h"

#include "design/Appearance.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "design/ZOLAppMarkView.h"
#include "design/ZOLMiniAppTokens.h"
#include "design/controls/TabLayout.h"

#include <QApplication>
#include <QCryptographicHash>
#include <QPainterPath>
#include <QStyle>
#include <QToolTip>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

#include <fmt/format.h>

namespace {

using namespace ostrel;
using enum ZOLThemePolicy::Mode;

[[maybe_unused]] auto* const qt = testing::AddGlobalTestEnvironment(new QtEnvironment);

std::string sha256(const std::string& text)
{
    return QCryptographicHash::hash(QByteArray::fromStdString(text), QCryptographicHash::Sha256)
        .toHex()
        .toStdString();
}

TEST(Provenance, TheDigestsAreThoseOfTheTables)
{
    std::string rows;
    const auto add = [&](const std::string& prefix, const ZOLMiniAppTokens::Table& table) {
        for (const auto& [key, value] : table)
            rows += fmt::format("{}.{}={}\n", prefix, key, value);
    };
    add("primitives", ZOLMiniAppTokens::primitives);
    for (const auto& [name, set] : { std::pair { "N1", ZOLMiniAppTokens::N1 },
             std::pair { "N1Dark", ZOLMiniAppTokens::N1Dark }, std::pair { "Web", ZOLMiniAppTokens::Web } }) {
        add(std::string(name) + ".semantic", set.semantic);
        add(std::string(name) + ".component", set.component);
    }
    EXPECT_EQ(sha256(rows), ZOLMiniAppTokens::sourceSHA256);

    std::string paths;
    const auto line = [&](std::string_view name, std::span<const ZOLAppMarkCommand> commands) {
        paths += std::string(name) + ":";
        for (const auto& [kind, x, y, x1, y1, x2, y2] : commands) {
            using enum ZOLAppMarkCommand::Kind;
            if (kind == close)
                paths += " Z";
            else if (kind == curve)
                paths += fmt::format(" C {} {} {} {} {} {}", x1, y1, x2, y2, x, y);
            else
                paths += fmt::format(" {} {} {}", kind == move ? 'M' : 'L', x, y);
        }
        paths += '\n';
    };
    line("square", ZOLAppMarks::square());
    line("signal", ZOLAppMarks::signal());
    for (const ZOLAppMark mark : ZOLAppMarks::all)
        line(ZOLAppMarks::rawValue(mark), ZOLAppMarks::glyph(mark));
    EXPECT_EQ(sha256(paths), ZOLAppMarks::sourceSHA256) << paths;
}

TEST(ZOLAppMark, IsFoundByItsExactWord)
{
    for (const ZOLAppMark mark : ZOLAppMarks::all)
        EXPECT_EQ(ZOLAppMarks::named(ZOLAppMarks::rawValue(mark)), mark);
    EXPECT_FALSE(ZOLAppMarks::named("Ostrel"));
    EXPECT_FALSE(ZOLAppMarks::named(""));
    EXPECT_EQ(ZOLAppMarks::label(ZOLAppMark::family), "zolwerk");
    EXPECT_EQ(ZOLAppMarks::label(ZOLAppMark::pellam), "pellam dial");
}

/// The mark's geometry in a picture: 100 by 60 points make a scale of 1.25, centred from x 20 on.
TEST(ZOLAppMarkView, StandsCentredAtTheScaleOfTheSmallerSide)
{
    for (const double ratio : { 1.0, 2.0 }) {
        StillImage still = StillImage::sized(100, 60, ratio);
        {
            QPainter painter(&still.image);
            ZOLAppMarkView::draw(painter, ZOLAppMark::ruvane, QRectF(0, 0, 100, 60), false);
        }
        const auto at = [&](double markX, double markY) {
            const QPointF point = QPointF(20 + markX * 1.25, markY * 1.25) * ratio;
            return still.image.pixel(static_cast<int>(point.x()), static_cast<int>(point.y()));
        };
        EXPECT_TRUE(near(at(5, 24), ZOLAppMarkView::ink)) << "the square's left edge";
        EXPECT_TRUE(near(at(20, 43), ZOLAppMarkView::ink)) << "its bottom edge";
        EXPECT_TRUE(near(at(24, 20), ZOLAppMarkView::ink)) << "the glyph's upright";
        EXPECT_TRUE(near(at(15, 24), ZOLAppMarkView::ink)) << "the glyph's beam";
        EXPECT_TRUE(near(at(35, 7), ZOLAppMarkView::signal)) << "the tab";
        for (const auto& [x, y] : { std::pair { 2.0, 24.0 }, { 46.0, 24.0 }, { 12.0, 12.0 }, { 5.4, 5.4 } })
            EXPECT_EQ(qAlpha(at(x, y)), 0) << x << " " << y;
    }
}

TEST(ZOLAppMarkView, ATemplateHasOneColourAndNoTab)
{
    const StillImage still = ZOLAppMarkView::image(ZOLAppMark::ostrel, ZOLAppMarkView::menuBarSize, true, 2);
    EXPECT_TRUE(still.isTemplate);
    EXPECT_EQ(still.accessibilityDescription, "ostrel");
    EXPECT_EQ(still.image.size(), QSize(36, 36));
    int drawn = 0;
    for (int y = 0; y < 36; ++y)
        for (int x = 0; x < 36; ++x) {
            const QRgb pixel = still.image.pixel(x, y);
            drawn += qAlpha(pixel) > 0 ? 1 : 0;
            EXPECT_EQ(pixel & 0xffffffU, 0U) << x << " " << y;
        }
    EXPECT_GT(drawn, 36 * 4);
    // The tab hangs to 9 mark units, the line below it starts at 13: nothing in between.
    EXPECT_EQ(qAlpha(still.image.pixel(26, 6)), 0);
    const platform::Image bar = platformImage(tinted(still, zolHex("#336699")));
    for (const auto pixel : bar.pixels)
        EXPECT_TRUE((pixel >> 24U) < 128 || near(pixel | 0xff000000U, zolHex("#336699"))) << pixel;
    EXPECT_FALSE(ZOLAppMarkView::image(ZOLAppMark::ostrel, 18, false).isTemplate);
}

TEST(ZOLAppMarkView, WithoutACallbackItPassesEverythingOn)
{
    struct Parent final : QWidget {
        void keyPressEvent(QKeyEvent*) override { ++keys; }
        void mousePressEvent(QMouseEvent*) override { ++presses; }
        int keys = 0;
        int presses = 0;
    } parent;
    ZOLAppMarkView mark(ZOLAppMark::ostrel, 40, &parent);
    const auto press = [&] {
        for (const int key : { Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter, Qt::Key_A })
            sendKey(mark, key);
        ::press(mark);
    };
    press();
    EXPECT_EQ(std::pair(parent.keys, parent.presses), std::pair(4, 1));
    EXPECT_EQ(mark.focusPolicy(), Qt::NoFocus);
    int clicks = 0;
    mark.setOnClick([&] { ++clicks; });
    press();
    EXPECT_EQ(clicks, 4);
    EXPECT_EQ(parent.keys, 5) << "another key is still passed on";
    EXPECT_NE(mark.focusPolicy(), Qt::NoFocus);
    mark.setMark(ZOLAppMark::pellam);
    const QAccessibleInterface* told = QAccessible::queryAccessibleInterface(&mark);
    EXPECT_EQ(told->role(), QAccessible::Graphic);
    EXPECT_EQ(told->text(QAccessible::Name), "pellam dial");
}

TEST(Appearance, AViewFollowsWhatIsAroundItAndAPlateStaysLight)
{
    QWidget window;
    auto* child = new QWidget(&window);
    auto* mark = new ZOLAppMarkView(ZOLAppMark::ostrel, 40, &window);
    ZOLThemePolicy::plate(*mark);
    for (const auto& [mode, opposite] : { std::pair { dark, light }, std::pair { light, dark } }) {
        ZOLThemePolicy::apply(opposite);
        setAppearance(window, mode);
        EXPECT_EQ(appearanceOf(*child), mode);
        EXPECT_EQ(resolved(OstrelStyle::ink, *child), qColor(OstrelStyle::ink.in(mode)));
        EXPECT_EQ(appearanceOf(*mark), light);
        mark->resize(40, 40);
        const QImage seen = rendered(*mark);
        EXPECT_TRUE(near(seen.pixel(20, 2), ZOLAppShellStyle::plate)) << "the plate, above the mark's edge";
        EXPECT_TRUE(near(seen.pixel(4, 20), ZOLAppMarkView::ink));
    }
    for (const auto mode : { dark, light }) {
        ZOLThemePolicy::apply(mode);
        EXPECT_EQ(appearanceOf(QWidget()), mode) << "what has no appearance of its own";
        EXPECT_EQ(QToolTip::palette().color(QPalette::ToolTipBase), qColor(OstrelStyle::bg.in(mode)));
    }
    EXPECT_EQ(QApplication::style()->name(), "fusion");
}

TEST(Paint, LinesAreWholeDevicePixelsAtEveryScaleAndPlace)
{
    for (const double ratio : { 1.0, 1.25, 1.5, 2.0 }) {
        for (const int offset : { 0, 1, 2, 3 }) {
            QWidget ground;
            ground.resize(40, 20);
            setAppearance(ground, light);
            auto* rule = separator(30);
            rule->setParent(&ground);
            rule->move(offset, 5 + offset);
            const QImage seen = rendered(ground, ratio);
            const int middle = static_cast<int>(20 * ratio);
            int lines = 0;
            for (int y = 0; y < seen.height(); ++y) {
                const bool inked = near(seen.pixel(middle, y), OstrelStyle::hair.light);
                EXPECT_TRUE(inked || near(seen.pixel(middle, y), OstrelStyle::bg.light))
                    << "a blurred line at scale " << ratio << ", offset " << offset << ", row " << y;
                lines += inked ? 1 : 0;
            }
            EXPECT_EQ(lines, static_cast<int>(ratio)) << ratio << " " << offset;
        }
    }
}

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
