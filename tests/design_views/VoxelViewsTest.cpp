// SPDX-License-Identifier: Apache-2.0
#include "design_views/ViewBench.h"

#include "design/OstrelStyle.h"
#include "design/ZOLAppMarkView.h"
#include "design/voxel/AutomationVoxelView.h"
#include "design/voxel/CompanionScene.h"
#include "design/voxel/VoxelView.h"
#include "design/voxel/ZOLVoxelModels.h"
#include "design/voxel/ZOLVoxelView.h"

#include <QCryptographicHash>
#include <QEnterEvent>

#include <algorithm>
#include <set>

#include <fmt/format.h>

namespace {

using namespace ostrel;

/// A figure in a window on screen, with time in the test's hands.
struct OnScreen : DesignBench {
    explicit OnScreen(const ZOLVoxelModel& model, bool assembles = false, bool selfTest = false)
    {
        services.selfTest = selfTest;
        view = new ZOLVoxelView(model, services, &window);
        view->setAssemblesOnAppear(assembles);
        view->setOnClick([this] { ++clicks; });
        view->resize(56, 56);
        window.resize(80, 80);
    }

    void show()
    {
        exposed(window);
        paint();
    }
    void paint() { static_cast<void>(rendered(*view)); }
    /// Lets the clock fire so many times.
    void ticks(int count)
    {
        for (int n = 0; n < count; ++n)
            time.advance(platform::Seconds(0.0625));
    }
    void enter(double x)
    {
        QEnterEvent event(QPointF(x, 9), QPointF(x, 9), QPointF(x, 9));
        QCoreApplication::sendEvent(view, &event);
    }
    QWidget window;
    ZOLVoxelView* view;
    int clicks = 0;
};

TEST(ZOLVoxelView, AppearsWholeThenFliesTogetherOnceForEachTimeOnScreen)
{
    OnScreen screen(ZOLVoxelModels::ostrel(), true);
    screen.show();
    EXPECT_FALSE(screen.view->figure().running()) << "the first picture is the finished figure";
    screen.time.runPosted();
    EXPECT_TRUE(screen.view->figure().running());
    EXPECT_EQ(screen.time.timers(), 1);
    screen.ticks(12);
    EXPECT_FALSE(screen.view->figure().running());
    EXPECT_EQ(screen.time.timers(), 0) << "an idle figure wakes nothing";
    screen.paint();
    screen.time.runPosted();
    EXPECT_EQ(screen.time.timers(), 0);
    screen.window.hide();
    screen.show();
    screen.time.runPosted();
    EXPECT_TRUE(screen.view->figure().running());
    screen.window.hide();
    EXPECT_EQ(screen.time.timers(), 0) << "a hidden one neither";
}

TEST(ZOLVoxelView, AClickIsHeardAtItsStartAndIgnoredInARun)
{
    OnScreen screen(ZOLVoxelModels::tessit());
    screen.show();
    const auto before = screen.view->figure().cubes();
    sendKey(*screen.view, Qt::Key_Space);
    EXPECT_EQ(screen.clicks, 1);
    EXPECT_EQ(screen.view->figure().cubes(), before);
    screen.ticks(2);
    sendKey(*screen.view, Qt::Key_Return);
    press(*screen.view);
    EXPECT_EQ(screen.clicks, 1);
    screen.ticks(11);
    EXPECT_NE(screen.view->figure().cubes(), before);
    EXPECT_EQ(screen.time.timers(), 0);
    press(*screen.view, Qt::RightButton);
    sendKey(*screen.view, Qt::Key_A);
    EXPECT_EQ(screen.clicks, 1);
    press(*screen.view);
    EXPECT_EQ(screen.clicks, 2);
    screen.view->setModel(ZOLVoxelModels::pellam());
    EXPECT_EQ(screen.time.timers(), 0) << "another model ends the run";
    EXPECT_EQ(screen.view->accessibleName(), "pellam dial");
    EXPECT_EQ(QAccessible::queryAccessibleInterface(screen.view)->role(), QAccessible::Graphic);
    screen.view->setOnClick([&] { delete std::exchange(screen.view, nullptr); });
    screen.view->trigger();
    EXPECT_EQ(screen.view, nullptr) << "a handler may destroy the view";
    EXPECT_EQ(screen.time.timers(), 0);
}

TEST(ZOLVoxelView, ARunStandsStillWhileCoveredAndGoesOnAfterwards)
{
    OnScreen screen(ZOLVoxelModels::tessit());
    screen.show();
    screen.view->trigger();
    screen.ticks(5);
    const double phase = screen.view->figure().phase();
    screen.occlusion.setCovered(true);
    EXPECT_EQ(screen.time.timers(), 0);
    screen.ticks(50);
    EXPECT_EQ(screen.view->figure().phase(), phase);
    screen.occlusion.setCovered(false);
    EXPECT_EQ(screen.time.timers(), 1);
    screen.ticks(8);
    EXPECT_FALSE(screen.view->figure().running());
    EXPECT_EQ(screen.time.timers(), 0);
    // Covered, a click is applied at once.
    screen.occlusion.setCovered(true);
    const auto before = screen.view->figure().cubes();
    screen.view->trigger();
    EXPECT_NE(screen.view->figure().cubes(), before);
    EXPECT_EQ(screen.clicks, 2);
    EXPECT_EQ(screen.time.timers(), 0);
}

TEST(ZOLVoxelView, UnderReducedMotionNothingMovesAndAClickCountsAtOnce)
{
    OnScreen screen(ZOLVoxelModels::tessit(), true);
    screen.workspace.setReduceMotion(true);
    screen.show();
    screen.time.runPosted();
    screen.enter(50);
    EXPECT_EQ(screen.time.timers(), 0);
    EXPECT_EQ(screen.view->figure().lift(), 0);
    const auto before = screen.view->figure().cubes();
    screen.view->trigger();
    EXPECT_NE(screen.view->figure().cubes(), before);
    EXPECT_EQ(screen.clicks, 1);
    screen.workspace.setReduceMotion(false);
    screen.enter(50);
    screen.view->trigger();
    screen.ticks(3);
    screen.workspace.setReduceMotion(true);
    EXPECT_FALSE(screen.view->figure().running()) << "a change ends a run on the spot";
    EXPECT_EQ(screen.view->figure().lift(), 0);
    EXPECT_EQ(screen.time.timers(), 0);
}

TEST(ZOLVoxelView, InASelfTestNoTimerStartsAndAFlashStays)
{
    OnScreen screen(ZOLVoxelModels::family(), true, true);
    screen.show();
    screen.time.runPosted();
    screen.enter(10);
    screen.view->trigger();
    EXPECT_EQ(screen.time.timers(), 0);
    screen.time.advance(platform::Seconds(5));
    const auto& cubes = screen.view->figure().cubes();
    EXPECT_EQ(std::ranges::count(cubes, ZOLVoxelColor::light, &ZOLVoxel::c), 8);
}

TEST(ZOLVoxelView, AGestureFromOutsideFlashesAndGoesBackUnlessTheViewIsGone)
{
    OnScreen screen(ZOLVoxelModels::family());
    const auto lit = [&] {
        return std::ranges::count(screen.view->figure().cubes(), ZOLVoxelColor::light, &ZOLVoxel::c);
    };
    screen.view->gesture();
    EXPECT_EQ(lit(), 8);
    screen.time.advance(platform::Seconds(0.13));
    EXPECT_EQ(lit(), 8);
    screen.time.advance(platform::Seconds(0.02));
    EXPECT_EQ(lit(), 0);
    screen.view->gesture();
    delete screen.view;
    screen.time.advance(platform::Seconds(1));
    EXPECT_EQ(screen.workspace.observers.count() + screen.occlusion.observers.count(), 0);
}

TEST(ZOLVoxelView, LeansAndRisesUnderThePointerWithinItsTime)
{
    OnScreen screen(ZOLVoxelModels::ostrel());
    screen.show();
    // The display's own pointer may have been there.
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(screen.view, &leave);
    screen.ticks(3);
    const QImage still = rendered(*screen.view);
    screen.enter(56);
    EXPECT_EQ(screen.time.timers(), 1);
    screen.ticks(3);
    EXPECT_EQ(screen.view->figure().lift(), 1);
    EXPECT_EQ(screen.time.timers(), 0);
    const QImage right = rendered(*screen.view);
    EXPECT_NE(right, still);
    screen.enter(0);
    EXPECT_NE(rendered(*screen.view), right) << "the same height, the other way";
    QCoreApplication::sendEvent(screen.view, &leave);
    screen.ticks(3);
    EXPECT_EQ(rendered(*screen.view), still) << "back where it was, to the pixel";
    EXPECT_EQ(screen.time.timers(), 0);
    // The ring of the view that has the keyboard.
    screen.window.activateWindow();
    screen.view->setFocus();
    ASSERT_TRUE(spinUntil([&] { return screen.view->hasFocus(); }));
    EXPECT_TRUE(near(rendered(*screen.view).pixel(28, 0), ZOLAppMarkView::ink));
    screen.view->clearFocus();
    EXPECT_FALSE(near(rendered(*screen.view).pixel(28, 0), ZOLAppMarkView::ink));
}

/// The places follow from the projection alone: two cubes, listed front first, of which the near one hides a
/// part of the far one, in a picture of 300 by 300 pixels.
TEST(ZOLVoxelView, APictureShowsTheNearestFacesWhereTheProjectionPutsThem)
{
    using enum ZOLVoxelColor;
    const ZOLVoxelModel model { "made", "made", "", { { 1, 1, 0, red }, { 0, 0, 0, ink } }, {} };
    const StillImage still = ZOLVoxelView::image(model, QSizeF(150, 150), false, 2);
    // From the far top's rear corner at -1 down to the near foot at 4 × 0.48, and two cells across; half a
    // cell around both.
    const double u = 300 / (1 + 4 * 0.48 + 1);
    const auto at = [&](double x, double y, double z) {
        const double top = (300 - (1 + 4 * 0.48) * u) / 2 + u;
        return still.image.pixelColor(
            static_cast<int>(150 + (x - y) * u), static_cast<int>(top + ((x + y) * 0.48 - z) * u));
    };
    const std::tuple<double, double, double, const char*> places[] {
        { 0.5, 0.5, 1, "#6b6e75" }, { 0.2, 1, 0.5, "#202124" }, { 1, 0.2, 0.5, "#6b6e75" }, // the far one
        { 1.5, 1.5, 1, "#db303d" }, { 1.5, 2, 0.5, "#db303d" }, { 2, 1.5, 0.5, "#db303d" }, // the near one
        { 1.1, 1.1, 1, "#db303d" }, // and not the front edge of the far one
    };
    for (const auto& [x, y, z, color] : places)
        EXPECT_EQ(at(x, y, z).name().toStdString(), color) << x << " " << y << " " << z;
    EXPECT_EQ(at(0, 0, 1.3).alpha(), 0);
    EXPECT_EQ(at(1.3, 0, 0).alpha(), 0);
    // The shadow of a cube in the air lies below it on the floor, a little smaller than its cell.
    const ZOLVoxelModel hovering { "made", "made", "", { { 0, 0, 2, ink } }, {} };
    const StillImage risen = ZOLVoxelView::image(hovering, QSizeF(100, 200), false);
    const double cell = 100 / 3.0;
    const double floor = 100 + (3 - 2 * 0.48) / 2 * cell;
    for (const auto& [along, shadow] :
        { std::pair(0.05, false), { 0.15, true }, { 0.85, true }, { 0.97, false } }) {
        const int y = static_cast<int>(floor + along * 2 * 0.48 * cell);
        EXPECT_EQ(risen.image.pixel(50, y), shadow ? 0xffe8e9edU : 0U) << along;
    }
}

TEST(ZOLVoxelView, IsDrawnWholeWhereverItStandsInItsWindow)
{
    OnScreen screen(ZOLVoxelModels::ostrel());
    screen.view->move(21, 13);
    screen.show();
    const QImage inWindow = screen.window.grab(QRect(21, 13, 56, 56)).toImage();
    EXPECT_EQ(inWindow.convertToFormat(QImage::Format_RGB32),
        screen.view->grab().toImage().convertToFormat(QImage::Format_RGB32));
}

TEST(ZOLVoxelView, ATemplateIsBlackWithoutAShadow)
{
    const StillImage still = ZOLVoxelView::image(ZOLVoxelModels::vormel(), QSizeF(18, 18), true, 2);
    EXPECT_TRUE(still.isTemplate);
    EXPECT_EQ(still.accessibilityDescription, "vormel trim");
    std::set<int> strengths;
    for (int y = 0; y < 36; ++y)
        for (int x = 0; x < 36; ++x) {
            EXPECT_EQ(still.image.pixel(x, y) & 0xffffffU, 0U);
            strengths.insert(qAlpha(still.image.pixel(x, y)));
        }
    EXPECT_GT(strengths.size(), 8U);
    // A figure on its floor has the shadow's colour below it in colour only.
    EXPECT_FALSE(ZOLVoxelView::image(ZOLVoxelModels::vormel(), QSizeF(18, 18), false).isTemplate);
}

TEST(Provenance, TheDigestOfTheModelsIsThatOfTheirVoxels)
{
    std::string text;
    for (const ZOLVoxelModel& model : ZOLVoxelModels::all())
        for (const auto& [x, y, z, color] : model.voxels)
            text += fmt::format("{}:{},{},{}={}\n", model.name, x, y, z, rawValue(color));
    EXPECT_EQ(QCryptographicHash::hash(QByteArray::fromStdString(text), QCryptographicHash::Sha256)
                  .toHex()
                  .toStdString(),
        ZOLVoxelModels::sourceSHA256);
}

TEST(VoxelView, BobsForTwoSecondsOfItsLifeWhileItCanBeSeen)
{
    DesignBench bench;
    VoxelView view(126, 138, true, bench.services);
    EXPECT_EQ(view.accessibleName(), QString::fromUtf8("Voxel companion · calm"));
    view.show();
    ASSERT_TRUE(spinUntil([&] { return bench.time.timers() == 1; }));
    bench.time.advance(platform::Seconds(1));
    bench.occlusion.setCovered(true);
    EXPECT_EQ(bench.time.timers(), 0);
    bench.time.advance(platform::Seconds(9));
    EXPECT_NEAR(view.phase(), 0.96, 1e-9);
    bench.occlusion.setCovered(false);
    bench.time.advance(platform::Seconds(9));
    EXPECT_NEAR(view.phase(), 2.08, 1e-9);
    view.hide();
    EXPECT_EQ(bench.occlusion.observers.count(), 0);
    view.show();
    QCoreApplication::processEvents();
    EXPECT_EQ(bench.time.timers(), 0) << "once in its life";
    // The cube at its feet, at (3, 1, 0): its left face begins below the front corner of the top.
    const double u = std::min(126 / 20.0, 138 / 17.0);
    const QPointF left(63 + (3 - 1.5) * u, 138 * 0.72 + ((3 + 2) * 0.48 - 0.3) * u);
    const auto signal = [&] { return rendered(view).pixel(left.toPoint()); };
    EXPECT_TRUE(near(signal(), CompanionScene::calmSignal));
    view.setMood("attention");
    EXPECT_TRUE(near(signal(), OstrelStyle::red.light));
    EXPECT_EQ(view.accessibleName(), QString::fromUtf8("Voxel companion · attention"));

    VoxelView still(20, 20, false, bench.services);
    exposed(still);
    EXPECT_EQ(bench.time.timers(), 0);
    still.setMotionEnabled(true);
    EXPECT_EQ(bench.time.timers(), 1);
    bench.workspace.setReduceMotion(true);
    EXPECT_EQ(bench.time.timers(), 0);
}

TEST(AutomationVoxelView, SaysWhatItShowsAndFollowsTheTheme)
{
    AutomationVoxelView badge(AutomationVoxelFamily::stack, AutomationVoxelState::failed);
    EXPECT_EQ(badge.size(), QSize(18, 18));
    EXPECT_EQ(badge.unit(), 3);
    EXPECT_EQ(badge.accessibleName(), "systemd automation, failed");
    EXPECT_EQ(badge.toolTip(), QString::fromUtf8("systemd · failed"));
    EXPECT_EQ(AutomationVoxelView(AutomationVoxelFamily::dot, AutomationVoxelState::paused, 6).unit(), 2);
    AutomationVoxelView large(AutomationVoxelFamily::dot, AutomationVoxelState::active, 120);
    for (const auto mode : ZOLThemePolicy::modes) {
        setAppearance(large, mode);
        // The lowest of three cubes: its left face, half a cell left of the middle.
        const QImage seen = rendered(large);
        EXPECT_TRUE(near(seen.pixel(50, static_cast<int>(60 - 22 + 1.22 * 20)), OstrelStyle::ink.in(mode)));
        EXPECT_TRUE(
            near(seen.pixel(50, static_cast<int>(60 - 22 + (1.22 - 2) * 20)), OstrelStyle::red.in(mode)));
    }
}

} // namespace
