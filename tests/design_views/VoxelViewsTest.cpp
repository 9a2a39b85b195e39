// SPDX-License-Identifier: Apache-2.0
#include "design/OstrelStyle.h"
#include "design/ZOLAppMarkView.h"
#include "design/voxel/AutomationVoxelView.h"
#include "design/voxel/CompanionScene.h"
#include "design/voxel/VoxelView.h"
#include "design/voxel/ZOLVoxelModels.h"
#include "design/voxel/ZOLVoxelView.h"

#include "support/DesignBench.h"
#include "support/QtEnvironment.h"
#include "support/Rendering.h"

#include <QAccessible>
#include <QCryptographicHash>
#include <QEnterEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWindow>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

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
        window.show();
        ASSERT_TRUE(spinUntil([this] { return window.windowHandle()->isExposed(); }));
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
    void click(Qt::MouseButton button = Qt::LeftButton)
    {
        QMouseEvent event(
            QEvent::MouseButtonPress, QPointF(9, 9), QPointF(9, 9), button, button, Qt::NoModifier);
        QCoreApplication::sendEvent(view, &event);
    }
    void press(int key)
    {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
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
    screen.press(Qt::Key_Space);
    EXPECT_EQ(screen.clicks, 1);
    EXPECT_EQ(screen.view->figure().cubes(), before);
    screen.ticks(2);
    screen.press(Qt::Key_Return);
    screen.click();
    EXPECT_EQ(screen.clicks, 1);
    screen.ticks(11);
    EXPECT_NE(screen.view->figure().cubes(), before);
    EXPECT_EQ(screen.time.timers(), 0);
    screen.click(Qt::RightButton);
    screen.press(Qt::Key_A);
    EXPECT_EQ(screen.clicks, 1);
    screen.click();
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

/// How far a point lies inside the convex polygon, in points; negative outside.
double inside(const std::vector<QPointF>& polygon, QPointF at)
{
    double least = 1e9;
    for (std::size_t n = 0; n < polygon.size(); ++n) {
        const QPointF from = polygon[n];
        const QPointF along = polygon[(n + 1) % polygon.size()] - from;
        const QPointF to = at - from;
        least = std::min(least, (along.x() * to.y() - along.y() * to.x()) / std::hypot(along.x(), along.y()));
    }
    return least;
}

/// The picture against polygons that the test computes itself: at points away from every edge, the colour is
/// that of the nearest face, or none where there is no face and no shadow.
TEST(ZOLVoxelView, APictureShowsTheNearestFacesWhereTheProjectionPutsThem)
{
    for (const ZOLVoxelModel& model : ZOLVoxelModels::all()) {
        std::vector<ZOLVoxel> cubes = model.voxels;
        std::ranges::stable_sort(cubes, {}, [](const ZOLVoxel& v) { return v.x + v.y + v.z; });
        double left = 1e9, right = -1e9, top = 1e9, bottom = -1e9;
        for (const auto& [x, y, z, color] : cubes) {
            left = std::min(left, x - y - 1.0);
            right = std::max(right, x - y + 1.0);
            top = std::min(top, (x + y) * 0.48 - z - 1);
            bottom = std::max(bottom, (x + y + 2) * 0.48);
        }
        const double u = std::min(400 / (right - left + 1), 372 / (bottom - top + 1));
        struct Face {
            std::vector<QPointF> corners;
            Color color;
        };
        std::vector<Face> faces;
        const auto add
            = [&](const ZOLVoxel& v, std::vector<std::array<double, 3>> corners, const char* color) {
                  Face face { {}, zolHex(color) };
                  for (const auto& [dx, dy, dz] : corners)
                      face.corners.emplace_back(200 + (v.x + dx - v.y - dy - (left + right) / 2) * u,
                          186 + ((v.x + dx + v.y + dy) * 0.48 - v.z - dz - (top + bottom) / 2) * u);
                  faces.push_back(std::move(face));
              };
        for (const ZOLVoxel& v : cubes)
            add({ v.x, v.y, 0, {} }, { { .08, .08, 0 }, { .92, .08, 0 }, { .92, .92, 0 }, { .08, .92, 0 } },
                "#e8e9ed");
        const std::array<std::array<const char*, 3>, 4> colors { { { "#6b6e75", "#202124", "#6b6e75" },
            { "#e8e9ed", "#6b6e75", "#6b6e75" }, { "#ffffff", "#e8e9ed", "#f2f3f5" },
            { "#db303d", "#db303d", "#db303d" } } };
        for (const ZOLVoxel& v : cubes) {
            const auto& [onTop, onLeft, onRight] = colors[static_cast<std::size_t>(v.c)];
            add(v, { { 0, 0, 1 }, { 1, 0, 1 }, { 1, 1, 1 }, { 0, 1, 1 } }, onTop);
            add(v, { { 0, 1, 1 }, { 1, 1, 1 }, { 1, 1, 0 }, { 0, 1, 0 } }, onLeft);
            add(v, { { 1, 1, 1 }, { 1, 0, 1 }, { 1, 0, 0 }, { 1, 1, 0 } }, onRight);
        }
        const StillImage still = ZOLVoxelView::image(model, QSizeF(200, 186), false, 2);
        int compared = 0;
        for (int y = 2; y < 372; y += 5)
            for (int x = 2; x < 400; x += 5) {
                const Face* nearest = nullptr;
                bool onEdge = false;
                for (const Face& face : faces) {
                    const double depth = inside(face.corners, QPointF(x + 0.5, y + 0.5));
                    if (depth > 0)
                        nearest = &face;
                    onEdge = depth > 0 ? depth < 2 : onEdge || depth > -2;
                }
                if (onEdge)
                    continue;
                compared += nearest ? 1 : 0;
                const QRgb seen = still.image.pixel(x, y);
                EXPECT_TRUE(near(seen, nearest ? nearest->color : Color { 0, 0, 0, 0 }))
                    << model.name << " at " << x << "," << y << " shows " << std::hex << seen;
            }
        EXPECT_GT(compared, 400) << model.name;
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
    still.show();
    ASSERT_TRUE(spinUntil([&] { return still.windowHandle()->isExposed(); }));
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
