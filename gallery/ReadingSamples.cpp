// SPDX-License-Identifier: Apache-2.0
#include "Samples.h"
#include "Sheet.h"
#include "StillServices.h"

#include "design/OstrelStyle.h"
#include "history/OstrelHistoryView.h"
#include "history/SparklineHoverView.h"
#include "panel/GaugeView.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace ostrel {

namespace {

constexpr double graphWidth = 352;
constexpr int stripWidth = 728;
constexpr int stripHeight = 56;

/// A load that comes and goes.
double load(std::size_t n)
{
    const auto t = static_cast<double>(n);
    return 45 + 30 * std::sin(t / 9) + 20 * std::sin(t / 2.3);
}

OstrelHistoryView* graph(std::size_t count, std::optional<std::size_t> boundary)
{
    std::vector<double> samples(count);
    for (std::size_t n = 0; n < count; ++n)
        samples[n] = load(n);
    return new OstrelHistoryView(std::move(samples), std::vector<std::int64_t>(count), "CPU", graphWidth,
        HistoryGraph::defaultHeight, boundary);
}

QWidget* strip(std::size_t count, StillServices& still)
{
    std::vector<int> samples(count);
    for (std::size_t n = 0; n < count; ++n)
        samples[n] = static_cast<int>(load(n));
    return makeSparkline(samples, stripWidth, stripHeight, "cpu load", still.nothing);
}

} // namespace

void drawReadings(Sheet& sheet)
{
    StillServices still;
    sheet.section("graphs, strips and gauges");
    sheet.view("two hours, restored and live", graph(120, 81));
    sheet.view("the first minutes", graph(12, std::nullopt));
    sheet.view("one minute", graph(1, std::nullopt));
    sheet.view("no minute yet", graph(0, std::nullopt));
    sheet.row();
    sheet.view("ticks, with caps", strip(60, still));
    sheet.view("no tick yet", strip(0, still));
    sheet.row();
    for (const auto& [caption, pct, level] : { std::tuple { "cpu", 38.0, "normal" },
             { "memory", 72.0, "warn" }, { "swap", 100.0, "crit" }, { "swap", 0.0, "normal" } }) {
        auto* gauge = new GaugeView(GaugeRules::defaultDiameter, still.services);
        gauge->update(pct, caption, OstrelStyle::ink, std::nullopt, level);
        sheet.view(level, gauge);
    }
}

} // namespace ostrel
