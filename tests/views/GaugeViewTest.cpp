// SPDX-License-Identifier: Apache-2.0
#include "panel/GaugeView.h"

#include "design/OstrelStyle.h"
#include "design_views/ViewBench.h"
#include "history/OstrelHistoryView.h"
#include "panel/LiveRegistry.h"

#include "support/Painted.h"

#include <QLabel>

#include <cmath>
#include <numbers>
#include <optional>

namespace {

using namespace ostrel;
using ZOLThemePolicy::Mode;

/// A gauge with time in the test's hands.
struct Gauge : DesignBench {
    explicit Gauge(bool selfTest = false)
    {
        services.selfTest = selfTest;
        view = std::make_unique<GaugeView>(GaugeRules::defaultDiameter, services);
        setAppearance(*view, Mode::light);
    }

    void show() { exposed(*view); }
    void update(double pct, std::optional<double> from = {}, std::string_view level = "normal")
    {
        view->update(pct, "cpu", OstrelStyle::ink, from, level);
    }
    void pictures(int count)
    {
        for (int n = 0; n < count; ++n)
            time.advance(platform::Seconds(1.0 / 60 + 1e-6));
    }

    std::unique_ptr<GaugeView> view;
};

TEST(GaugeView, ARebuiltGaugeMovesFromTheLastValueWhileItCanBeSeenAndAtNoOtherTime)
{
    Gauge gauge;
    gauge.update(80, 20);
    EXPECT_EQ(gauge.time.timers(), 0) << "it isn't on screen yet";
    EXPECT_EQ(gauge.view->displayedPct(), 20);
    gauge.show();
    EXPECT_EQ(gauge.time.timers(), 1);
    gauge.pictures(10);
    const double underway = gauge.view->displayedPct();
    EXPECT_GT(underway, 20);
    EXPECT_LT(underway, 80);
    gauge.occlusion.setCovered(true);
    EXPECT_EQ(gauge.time.timers(), 0);
    gauge.pictures(60);
    EXPECT_EQ(gauge.view->displayedPct(), underway);
    gauge.occlusion.setCovered(false);
    gauge.pictures(16);
    EXPECT_EQ(gauge.view->displayedPct(), 80);
    EXPECT_EQ(gauge.time.timers(), 0) << "an idle gauge wakes nothing";
    gauge.update(30, 80);
    EXPECT_EQ(gauge.time.timers(), 1);
    gauge.view->hide();
    EXPECT_EQ(gauge.time.timers(), 0);
    gauge.show();
    EXPECT_EQ(gauge.time.timers(), 1);
    gauge.view.reset();
    EXPECT_EQ(gauge.time.timers(), 0);
    EXPECT_EQ(gauge.workspace.observers.count() + gauge.occlusion.observers.count(), 0);
}

TEST(GaugeView, WithoutAWayOrAWishForMovementItIsThereAtOnce)
{
    for (const auto& [pct, from, reduced, selfTest, shown] :
        { std::tuple { 80.0, std::optional(20.0), true, false, 80.0 }, { 80.0, { 20.0 }, false, true, 80.0 },
            { 80.0, {}, false, false, 80.0 }, { 20.3, { 20.0 }, false, false, 20.3 },
            { 140.0, { 150.0 }, false, false, 100.0 }, { std::nan(""), {}, false, false, 0.0 } }) {
        Gauge gauge(selfTest);
        gauge.workspace.setReduceMotion(reduced);
        gauge.show();
        gauge.update(pct, from);
        EXPECT_EQ(gauge.view->displayedPct(), shown) << pct;
        EXPECT_EQ(gauge.time.timers(), 0) << pct;
    }
    Gauge gauge;
    gauge.show();
    gauge.update(80, 20);
    gauge.pictures(3);
    gauge.workspace.setReduceMotion(true);
    EXPECT_EQ(gauge.view->displayedPct(), 80) << "a wish that comes on the way ends it";
    EXPECT_EQ(gauge.time.timers(), 0);
}

TEST(GaugeView, TheArcRunsClockwiseFromTheTopAsFarAsTheValue)
{
    for (const Mode mode : ZOLThemePolicy::modes)
        for (const int ratio : { 1, 2 })
            for (const double pct : { 0.0, 25.0, 60.0, 100.0 }) {
                Gauge gauge;
                setAppearance(*gauge.view, mode);
                gauge.update(pct);
                const QImage image = rendered(*gauge.view, ratio);
                for (int degrees = 5; degrees < 360; degrees += 10) {
                    // Round ends reach half a line's width further.
                    const double end = pct * 3.6;
                    if (std::abs(degrees - end) < 6 || (pct > 0 && degrees > 354))
                        continue;
                    const double angle = degrees * std::numbers::pi / 180;
                    const auto at = [&](double radius) {
                        return image.pixel(static_cast<int>((42 + radius * std::sin(angle)) * ratio),
                            static_cast<int>((42 - radius * std::cos(angle)) * ratio));
                    };
                    const auto& ring = degrees < end ? OstrelStyle::ink : OstrelStyle::hair;
                    EXPECT_TRUE(near(at(39), ring.in(mode), 4)) << pct << " at " << degrees;
                    EXPECT_TRUE(near(at(35), OstrelStyle::bg.in(mode))) << pct << " at " << degrees;
                }
            }
}

TEST(GaugeView, ALevelHasItsMarkWhileTheUserWantsShapes)
{
    Gauge gauge;
    gauge.update(90, {}, "crit");
    EXPECT_EQ(gauge.view->levelMark(), "");
    const QImage plain = rendered(*gauge.view);
    gauge.workspace.setDifferentiateWithoutColor(true);
    EXPECT_EQ(gauge.view->levelMark(), "▲ ");
    EXPECT_NE(rendered(*gauge.view), plain);
    gauge.update(90, {}, "warn");
    EXPECT_EQ(gauge.view->levelMark(), "△ ");
    gauge.update(90);
    EXPECT_EQ(gauge.view->levelMark(), "");
    EXPECT_EQ(rendered(*gauge.view), plain);
}

TEST(GaugeView, TheTextsStandInTheMiddleOneAboveTheOther)
{
    Gauge gauge;
    gauge.update(38);
    const QImage image = rendered(*gauge.view, 2);
    const auto inked = [&](const ThemedColor& color, int from, int to) {
        return around(image, QRect(46, from, 76, to - from), // within the ring
            [&](QRgb pixel) { return near(pixel, color.in(Mode::light), 12); });
    };
    // The value's line ends at 56.5 points, the caption's at 72.5.
    const QRect value = inked(OstrelStyle::ink, 40, 113), caption = inked(OstrelStyle::muted, 118, 145);
    EXPECT_NEAR(value.center().x(), 84, 3);
    EXPECT_NEAR(caption.center().x(), 84, 3);
    EXPECT_NEAR(value.height(), 2 * 12, 4);
    EXPECT_NEAR(value.bottom(), 2 * 51.8, 3) << "digits stand on the base line";
    EXPECT_LT(caption.bottom(), 145);
}

TEST(GaugeView, AnUnchangedReadingPaintsNothing)
{
    Gauge gauge;
    gauge.show();
    gauge.update(40, 40);
    Painted painted(*gauge.view);
    (void)painted.area();
    gauge.update(40, 40);
    EXPECT_EQ(painted.area(), 0);
    gauge.update(40.3, 40);
    EXPECT_EQ(painted.area(), 84 * 84);
    gauge.workspace.setDifferentiateWithoutColor(true);
    EXPECT_EQ(painted.area(), 0) << "a normal level has no mark";
    gauge.update(40.3, 40.3, "warn");
    EXPECT_EQ(painted.area(), 84 * 84);
}

TEST(GaugeView, TellsItsTargetAsALevel)
{
    Gauge gauge;
    auto* told = QAccessible::queryAccessibleInterface(gauge.view.get());
    for (const auto& [pct, words, level] :
        { std::tuple { 41.5, "42%", 41.5 }, { 140.0, "100%", 100.0 }, { -3.0, "0%", 0.0 } }) {
        gauge.update(pct, 7);
        EXPECT_EQ(told->role(), QAccessible::ProgressBar);
        EXPECT_EQ(told->text(QAccessible::Name), "cpu");
        EXPECT_EQ(told->text(QAccessible::Value), words);
        ASSERT_TRUE(told->valueInterface());
        EXPECT_EQ(told->valueInterface()->currentValue().toDouble(), level);
        EXPECT_EQ(told->valueInterface()->maximumValue().toDouble(), 100);
    }
}

TEST(LiveRegistry, WritesToWhatTheBodyRegisteredAndToNothingOnceItIsCleared)
{
    DesignBench bench;
    QLabel label("–");
    auto gauge = std::make_unique<GaugeView>(GaugeRules::defaultDiameter, bench.services);
    OstrelHistoryView graph({}, {}, "CPU", 100);
    LiveRegistry live;
    live.add("cpu", &label);
    live.add("cpu", gauge.get());
    live.add("cpu", &graph);
    for (const char* key : { "swap", "cpu" }) {
        live.setText(key, key);
        live.updateGauge(key, 30, 20, "normal");
        live.applyGraph(key, { 1, 2 }, { 60, 61 }, 1);
    }
    EXPECT_EQ(label.text(), "cpu");
    EXPECT_EQ(gauge->caption(), "cpu");
    EXPECT_EQ(gauge->displayedPct(), 20);
    EXPECT_EQ(graph.samples(), (std::vector<double> { 1, 2 }));
    EXPECT_EQ(graph.liveBoundary(), 1U);
    live.clear();
    gauge.reset();
    live.setText("cpu", "after");
    live.updateGauge("cpu", 50, {}, "normal");
    live.applyGraph("cpu", {}, {}, {});
    EXPECT_EQ(label.text(), "cpu");
    EXPECT_EQ(graph.samples().size(), 2U);
}

} // namespace
