// SPDX-License-Identifier: Apache-2.0
#include "bar/AboutWindow.h"

#include "bar/BarPainter.h"
#include "core/Version.h"
#include "design/OstrelStyle.h"
#include "design/controls/ZOLShellLabel.h"
#include "design_views/ViewBench.h"

#include <QStringList>

#include <fmt/format.h>

namespace {

using namespace ostrel;

[[maybe_unused]] auto* const qt = testing::AddGlobalTestEnvironment(new QtEnvironment);

/// The rectangle of the pixels that are more than half covered.
QRect inked(const platform::Image& image)
{
    QRect rect;
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x)
            if (image.pixels[std::size_t(y * image.width + x)] >> 24 > 127)
                rect |= QRect(x, y, 1, 1);
    return rect;
}

TEST(BarPainter, ASquareShowsTheFiguresAsLargeAsItCan)
{
    const BarPainter painter;
    const auto drawn = [&](bool mark, std::vector<std::string> figures, int size) {
        return painter.valuePicture({ mark, "a title too long for it", std::move(figures) })
            ->draw(size, size, 0x123456);
    };
    for (const int size : { 16, 22, 24, 32, 44, 48, 64 }) {
        EXPECT_EQ(drawn(false, { "100%", "5%" }, size) == drawn(false, { "100", "5%" }, size), size == 16)
            << "the sign goes where four characters can't be told apart, at " << size;
        EXPECT_EQ(drawn(false, { "123.4", "5%" }, size) == drawn(false, { "123", "5%" }, size), size <= 22);
        const QRect two = inked(drawn(false, { "88%", "88%" }, size));
        EXPECT_GE(two.height(), size - 1);
        EXPECT_GE(two.width(), size - 3);
        EXPECT_GE(inked(drawn(false, { "8" }, size)).height(), size / 2);
        EXPECT_GE(inked(drawn(true, { "88%" }, size)).height(), size - 4) << "the mark above the figure";
        EXPECT_GE(inked(painter.markPicture()->draw(size, size, 0)).width(), size * 3 / 4);
    }
    EXPECT_EQ(drawn(false, { "8" }, 48).pixels[24 * 48 + 24] & 0xffffff, 0x123456U);
}

TEST(BarPainter, AWidePlaceShowsMarkAndTextWhereTheyFit)
{
    const BarPainter painter;
    EXPECT_EQ(painter.titleWidth(""), 0);
    const std::string title = " cpu 12%";
    const double width = painter.titleWidth(title);
    EXPECT_NEAR(width, 8 * (6.6 + 0.2), 0.5);
    const auto picture = painter.valuePicture({ true, title, { "12%" } });
    const QRect wide = inked(picture->draw(120, 24, 0));
    EXPECT_NEAR(wide.width(), 18 + width, 6);
    EXPECT_NEAR(wide.center().x(), 60, 3);
    EXPECT_LT(wide.height(), 20);
    EXPECT_GT(inked(picture->draw(60, 24, 0)).height(), 20) << "a square's rows: the text doesn't fit";
    EXPECT_NEAR(inked(picture->draw(240, 48, 0)).width(), 2 * wide.width(), 4);
    EXPECT_NE(picture->key(), painter.valuePicture({ true, " cpu 13%", { "13%" } })->key());
    EXPECT_NE(picture->key(), painter.valuePicture({ false, title, { "12%" } })->key());
}

TEST(AboutWindow, IsBuiltOnceAndHoldsAllItsTexts)
{
    AboutWindow about;
    about.applyTheme(ZOLThemePolicy::Mode::dark);
    EXPECT_FALSE(about.window());
    about.show();
    QWidget* window = about.window();
    EXPECT_EQ(window->size(), QSize(320, 372));
    EXPECT_EQ(window->windowTitle(), "about OSTREL");
    std::string said;
    for (const auto* label : window->findChildren<ZOLShellLabel*>()) {
        said += label->text().toStdString() + "\n";
        EXPECT_TRUE(window->rect().contains(label->geometry())) << qPrintable(label->text());
        EXPECT_FALSE(label->isCut());
        EXPECT_GE(label->height(), label->heightForWidth(label->width()));
    }
    EXPECT_TRUE(said.starts_with(fmt::format("OSTREL\n{} · build {} · local + server\n"
                                             "Native memory monitor for macOS. Readings stay on this Mac. "
                                             "The mark is the shared Zolwerk drawing; the voxel character of "
                                             "the same model stands in the panel header.\n",
        appVersion, appBuild)))
        << said;
    QStringList tips;
    for (const QWidget* view : window->findChildren<QWidget*>())
        tips << view->toolTip();
    EXPECT_TRUE(tips.contains("OSTREL · product mark"));
    for (const auto mode : { ZOLThemePolicy::Mode::dark, ZOLThemePolicy::Mode::light }) {
        about.applyTheme(mode);
        EXPECT_TRUE(near(window->grab().toImage().pixel(2, 2), OstrelStyle::bg.in(mode)));
    }
    for (const auto& [key, modifiers] :
        { std::pair { Qt::Key_Escape, Qt::NoModifier }, { Qt::Key_W, Qt::ControlModifier } }) {
        QKeyEvent press(QEvent::KeyPress, key, modifiers);
        QCoreApplication::sendEvent(window, &press);
        EXPECT_FALSE(window->isVisible()) << key;
        about.show();
        EXPECT_TRUE(window->isVisible());
        EXPECT_EQ(about.window(), window);
    }
}

} // namespace
