// SPDX-License-Identifier: Apache-2.0
#include "panel/LiveRegistry.h"

#include "history/OstrelHistoryView.h"
#include "panel/GaugeView.h"

#include "support/DesignBench.h"
#include "support/QtEnvironment.h"

#include <QLabel>

#include <memory>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

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
