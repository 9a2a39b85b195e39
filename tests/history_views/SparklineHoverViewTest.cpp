// SPDX-License-Identifier: Apache-2.0
#include "history/SparklineHoverView.h"

#include "design/OstrelStyle.h"
#include "design_views/ViewBench.h"

#include "support/FakeWorkspace.h"
#include "support/Painted.h"
#include "support/Pointer.h"

#include <QHelpEvent>
#include <QToolTip>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

using namespace ostrel;
using ZOLThemePolicy::Mode;

/// Half of the ink over the ground.
Color faintInk(Mode mode)
{
    const Color ink = OstrelStyle::ink.in(mode), ground = OstrelStyle::bg.in(mode);
    return { (ink.red + ground.red) / 2, (ink.green + ground.green) / 2, (ink.blue + ground.blue) / 2, 1 };
}

TEST(SparklineHoverView, BarsAndCapsStandOnWholePixelsInBothThemesAtBothScales)
{
    FakeWorkspace workspace;
    workspace.setDifferentiateWithoutColor(true);
    // A pitch of 10.4 points, and half a point a percent. Above: 69, 70, 71 and 1 percent.
    const std::vector samples { 20, 69, 70, 71, 1 };
    SparklineHoverView view(samples, 52, 50, "cpu load", workspace);
    for (const Mode mode : ZOLThemePolicy::modes)
        for (const int ratio : { 1, 2 }) {
            setAppearance(view, mode);
            const QImage image = rendered(view, ratio);
            const auto pixels
                = [ratio](double points) { return static_cast<int>(std::round(points * ratio)); };
            for (std::size_t n = 0; n < samples.size(); ++n) {
                const double from = 10.4 * static_cast<double>(n), tall = std::max(1.0, samples[n] / 2.0);
                const int right = pixels(from + 9.4), top = pixels(50 - tall);
                const int capBottom = samples[n] >= 70 ? pixels(50 - tall + 3) : top;
                for (int x = pixels(from); x < pixels(from + 10.4); ++x)
                    for (int y = 0; y < image.height(); ++y) {
                        const Color expected = x >= right || y < top ? OstrelStyle::bg.in(mode)
                            : y < capBottom                          ? OstrelStyle::ink.in(mode)
                                                                     : faintInk(mode);
                        ASSERT_TRUE(near(image.pixel(x, y), expected)) << n << ": " << x << "," << y;
                    }
            }
        }
}

TEST(SparklineHoverView, CapsComeAndGoWithTheUsersWish)
{
    FakeWorkspace workspace;
    SparklineHoverView view({ 90 }, 20, 20, "cpu load", workspace);
    setAppearance(view, Mode::light);
    exposed(view);
    Painted painted(view);
    (void)painted.area();
    const auto top = [&] { return rendered(view).pixel(5, 3); };
    EXPECT_TRUE(near(top(), faintInk(Mode::light)));
    workspace.setDifferentiateWithoutColor(true);
    EXPECT_EQ(painted.area(), 20 * 20);
    EXPECT_TRUE(near(top(), OstrelStyle::ink.in(Mode::light)));
}

TEST(SparklineHoverView, TellsItsFiguresAsTheyAreAndSaysWhenThereAreNone)
{
    FakeWorkspace workspace;
    const std::unique_ptr<QWidget> strip(makeSparkline({ 140, 7, 33 }, 60, 56, "cpu load", workspace));
    auto* told = QAccessible::queryAccessibleInterface(strip.get());
    EXPECT_EQ(told->role(), QAccessible::StaticText);
    EXPECT_EQ(told->text(QAccessible::Name), "cpu load");
    for (const auto place : { QAccessible::Value, QAccessible::Description })
        EXPECT_EQ(told->text(place), "latest 33%, low 7%, peak 140%, 3 samples");
    EXPECT_EQ(told->valueInterface(), nullptr) << "words aren't a level";

    SparklineHoverView empty({}, 120, 56, "cpu load", workspace);
    setAppearance(empty, Mode::light);
    EXPECT_EQ(empty.caption(), "history");
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&empty)->text(QAccessible::Name), "no history yet");
    moveOver(empty, { 3, 3 });
    EXPECT_EQ(empty.toolTip(), "");
    const QImage image = rendered(empty, 2);
    const QRect note = around(image, image.rect(),
        [ground = image.pixel(image.width() - 1, 0)](QRgb pixel) { return pixel != ground; });
    EXPECT_LT(note.left(), 6) << "at the left";
    EXPECT_NEAR((note.top() + note.bottom()) / 2.0, image.height() / 2.0, 5) << "and in the middle";
}

TEST(SparklineHoverView, TheTipFollowsThePointerOnceItIsUpAndIsTakenAwayWithIt)
{
    FakeWorkspace workspace;
    SparklineHoverView view({ 10, 20, 30 }, 60, 56, "cpu load", workspace);
    exposed(view);
    moveOver(view, { 50, 5 });
    EXPECT_FALSE(QToolTip::isVisible()) << "it waits as every tip does";
    // The pointer may rest where it was when the view came up under it.
    QHelpEvent rested(QEvent::ToolTip, QPoint(5, 5), view.mapToGlobal(QPoint(5, 5)));
    QCoreApplication::sendEvent(&view, &rested);
    EXPECT_EQ(QToolTip::text(), QString::fromUtf8("cpu load · 10% · 2 samples ago"));
    moveOver(view, { 25, 5 });
    EXPECT_EQ(QToolTip::text(), QString::fromUtf8("cpu load · 20% · 1 sample ago"));
    leave(view);
    EXPECT_EQ(view.toolTip(), "");
    EXPECT_TRUE(spinUntil([] { return !QToolTip::isVisible(); }));
}

} // namespace
