// SPDX-License-Identifier: Apache-2.0
#include "history/OstrelHistoryView.h"

#include "design/OstrelStyle.h"
#include "design_views/ViewBench.h"

#include "support/Painted.h"
#include "support/Pointer.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <numbers>
#include <optional>
#include <set>

namespace {

using namespace ostrel;
using ZOLThemePolicy::Mode;

[[maybe_unused]] auto* const qt = testing::AddGlobalTestEnvironment(new QtEnvironment);

constexpr int width = 290; ///< a step of ten points with up to thirty samples
constexpr int height = 76;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

std::vector<std::int64_t> minutesOf(std::size_t count, std::int64_t first)
{
    std::vector<std::int64_t> minutes(count);
    for (std::size_t n = 0; n < count; ++n)
        minutes[n] = first + static_cast<std::int64_t>(n);
    return minutes;
}

/// A graph on screen.
struct Graph {
    explicit Graph(const std::vector<double>& samples, std::optional<std::size_t> boundary = std::nullopt)
        : view(samples, minutesOf(samples.size(), 725), "CPU", width, height, boundary)
    {
        setAppearance(view, Mode::light);
    }

    [[nodiscard]] std::set<int> rows(const QImage& image, int column, const ThemedColor& color) const
    {
        std::set<int> rows;
        for (int y = 0; y < image.height(); ++y)
            if (near(image.pixel(column, y), color.in(mode)))
                rows.insert(y);
        return rows;
    }

    OstrelHistoryView view;
    Mode mode = Mode::light;
};

TEST(OstrelHistoryView, ItsGridIsThreeLinesOfOnePixelInBothThemesAtEveryScale)
{
    for (const auto& [ratio, rows] : { std::pair { 1.0, std::set { 15, 38, 60 } },
             { 1.5, std::set { 22, 57, 91 } }, { 2.0, std::set { 30, 76, 121 } } })
        for (const Mode mode : ZOLThemePolicy::modes) {
            Graph graph({ 50, 50 });
            graph.mode = mode;
            setAppearance(graph.view, mode);
            const QImage image = rendered(graph.view, ratio);
            for (const int column : { 0, 100 })
                EXPECT_EQ(graph.rows(image, column, OstrelStyle::hair), rows) << ratio;
        }
}

TEST(OstrelHistoryView, TheLineEndsInARedDotOnTheRightEdge)
{
    for (const double ratio : { 1.0, 2.0 }) {
        // At the floor, nine tenths of the height down.
        Graph graph({ 100, 0 });
        const QImage image = rendered(graph.view, ratio);
        const auto at = [&](double x, double y) {
            return image.pixel(
                static_cast<int>(std::floor(x * ratio)), static_cast<int>(std::floor(y * ratio)));
        };
        const Color ground = OstrelStyle::bg.in(Mode::light);
        EXPECT_TRUE(near(at(289.2, 68.2), OstrelStyle::red.in(Mode::light)));
        EXPECT_TRUE(near(at(286, 71), ground)) << "two points around the end";
        EXPECT_TRUE(near(at(285, 38.2), OstrelStyle::ink.in(Mode::light), 12)) << "half way down";
        EXPECT_TRUE(near(at(277, 7.6), ground)) << "left of the first sample";
        int red = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                red += near(image.pixel(x, y), OstrelStyle::red.in(Mode::light)) ? 1 : 0;
        EXPECT_NEAR(red / (ratio * ratio), 2 * std::numbers::pi, 4) << "half of it: the edge cuts the rest";
        // One sample alone is a dot without a line.
        Graph one({ 50 });
        const QImage dot = rendered(one.view, ratio);
        EXPECT_TRUE(near(dot.pixel(dot.width() - 1, dot.height() / 2), OstrelStyle::red.in(Mode::light)));
        for (int x = 0; x < static_cast<int>(287 * ratio); ++x)
            ASSERT_TRUE(one.rows(dot, x, OstrelStyle::ink).empty()) << x;
        // Of one height it is alike all along, and begins upright where few samples let it begin inside.
        for (const int count : { 20, 60 }) {
            Graph even(std::vector(static_cast<std::size_t>(count), 33.0));
            const QImage line = rendered(even.view, ratio);
            const auto alike = [&](int a, int b) {
                return line.copy(a, 0, 1, line.height()) == line.copy(b, 0, 1, line.height());
            };
            const int start = static_cast<int>(std::max(0, 30 - count) * 10 * ratio);
            for (int x = start; x < static_cast<int>(287 * ratio); ++x)
                ASSERT_TRUE(alike(x, start)) << x << " of " << count;
            for (int x = 0; x < start; ++x)
                ASSERT_TRUE(alike(x, 0) && !alike(x, start)) << x;
        }
    }
}

TEST(OstrelHistoryView, ADashedLineOnWholePixelsStandsWhereThisRunBegins)
{
    for (const int ratio : { 1, 2 }) {
        std::set<int> dashes;
        for (int y = 0; y < height * ratio; ++y)
            if (y / ratio % 5 < 2)
                dashes.insert(y);
        // Of two samples, the later one alone is of this run: the line stands whole inside the edge.
        for (const auto& [count, boundary, left] :
            { std::tuple { 30U, 7U, ratio == 1 ? 70 : 139 }, { 2U, 1U, 289 * ratio } }) {
            // All samples at the floor, away from most dashes.
            Graph graph(std::vector<double>(count, 0), boundary);
            const QImage image = rendered(graph.view, ratio);
            Graph without(std::vector<double>(count, 0), {});
            const QImage plain = rendered(without.view, ratio);
            for (int x = 0; x < width * ratio; ++x) {
                std::set<int> changed;
                for (int y = 0; y < height * ratio; ++y)
                    if (image.pixel(x, y) != plain.pixel(x, y))
                        changed.insert(y);
                const bool inside = x >= left && x < left + ratio;
                if (!inside) {
                    ASSERT_TRUE(changed.empty()) << x;
                    continue;
                }
                // The dot lies over it.
                const auto seen = graph.rows(image, x, OstrelStyle::muted);
                for (const int y : dashes)
                    EXPECT_TRUE(seen.contains(y) || y >= 60 * ratio) << x << "," << y;
                for (const int y : seen)
                    EXPECT_TRUE(dashes.contains(y)) << x << "," << y;
            }
        }
        for (const std::size_t none : { 0U, 30U }) {
            Graph graph(std::vector<double>(30, 0), none);
            Graph without(std::vector<double>(30, 0));
            EXPECT_EQ(rendered(graph.view, ratio), rendered(without.view, ratio)) << none;
        }
    }
}

TEST(OstrelHistoryView, WithoutSamplesItSaysSoOnItsGrid)
{
    Graph graph({});
    const QImage image = rendered(graph.view, 2);
    EXPECT_EQ(graph.rows(image, 5, OstrelStyle::hair).size(), 3U);
    const QRect note = around(
        image, image.rect(), [](QRgb pixel) { return near(pixel, OstrelStyle::muted.in(Mode::light), 40); });
    EXPECT_NEAR(note.left(), 17, 2);
    EXPECT_GE(note.top(), 2 * (38 - 6));
    EXPECT_LT(note.bottom(), 2 * (38 - 6 + 14));
}

TEST(OstrelHistoryView, AnUnchangedMinutePaintsNothing)
{
    const std::vector samples { 10.0, nan, 30.0 };
    Graph graph(samples, 1);
    exposed(graph.view);
    Painted painted(graph.view);
    (void)painted.area();
    graph.view.apply(samples, minutesOf(3, 725), 1);
    EXPECT_EQ(painted.area(), 0);
    graph.view.apply(samples, minutesOf(3, 726), 1);
    EXPECT_EQ(painted.area(), 0) << "minutes aren't drawn";
    for (const auto& [changed, boundary] :
        { std::pair { std::vector { 10.0, nan, 31.0 }, std::optional<std::size_t>(1) },
            { { 10.0, nan, 31.0 }, {} }, { { 10.0, 2.0, 31.0 }, {} }, { {}, {} } }) {
        graph.view.apply(changed, minutesOf(changed.size(), 726), boundary);
        EXPECT_EQ(painted.area(), width * height);
    }
}

TEST(OstrelHistoryView, TellsAssistiveTechnologyWhatItShowsNow)
{
    Graph graph({ 10, 20, 30 }, 1);
    auto* told = QAccessible::queryAccessibleInterface(&graph.view);
    EXPECT_EQ(told->role(), QAccessible::Graphic);
    EXPECT_EQ(told->text(QAccessible::Name), QString::fromUtf8("CPU · 3 minutes · 1 restored, 2 this run"));
    graph.view.apply({ 10, 20, 30, 40 }, minutesOf(4, 725), {});
    EXPECT_EQ(told->text(QAccessible::Name), QString::fromUtf8("CPU · 4 minutes · 0 restored, 4 this run"));
}

TEST(OstrelHistoryView, TheTipFollowsThePointerAndTheMinutesAndGoesWithIt)
{
    // Two hours east of Greenwich all year.
    ::setenv("TZ", "TEST-2", 1);
    ::tzset();
    Graph graph({ 10, 20, 30 });
    const auto tip = [&] { return graph.view.toolTip().toStdString(); };
    EXPECT_EQ(tip(), "");
    moveOver(graph.view, { 3, 40 });
    EXPECT_EQ(tip(), "CPU · 10% · 14:05");
    moveOver(graph.view, { 279, 70 });
    EXPECT_EQ(tip(), "CPU · 20% · 14:06");
    graph.view.apply({ 10, 20, 30 }, minutesOf(3, 745), {});
    EXPECT_EQ(tip(), "CPU · 20% · 14:26") << "without a move, and without a change of the samples";
    graph.view.apply({ 10, 25, 30 }, { 1, INT64_MAX, 3 }, {});
    EXPECT_EQ(tip(), "CPU · 25%");
    leave(graph.view);
    EXPECT_EQ(tip(), "");
    graph.view.apply({ 11, 20, 30 }, minutesOf(3, 745), {});
    EXPECT_EQ(tip(), "") << "the pointer is elsewhere";
    ::unsetenv("TZ");
    ::tzset();
}

} // namespace
