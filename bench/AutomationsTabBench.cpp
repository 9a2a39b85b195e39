// SPDX-License-Identifier: Apache-2.0
/// What the automations tab costs over ten thousand jobs: a body built anew for a page, for a search, and for
/// a page whose rows are all open. A body may take 8 ms in 99 of 100 cases.
#include "Measured.h"
#include "Toolkit.h"
#include "automations/AutomationsBench.h"
#include "views/AppBench.h"

#include <QCoreApplication>
#include <QEvent>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

using namespace ostrel;

constexpr int jobs = 10000;

std::string manyJobs()
{
    const char* const schedulers[] { "orca", "codex", "launchd", "systemd", "registry", "cloud" };
    std::vector<json::Value> rows;
    for (int at = 0; at < jobs; ++at)
        rows.push_back(jobJson(schedulers[at % 6], "user:job-" + std::to_string(at * 7919 % jobs) + ".timer",
            { { "schedule", "*-*-* 02:00:00" },
                { "last_result", at % 4 == 0 ? "failed · exit 3" : "success" },
                { "last_run", "2026-11-25T06:00:01+00:00" } }));
    return inventoryJson(rows);
}

/// The open panel on the tab with all of them.
struct OpenAutomations : AppBench {
    OpenAutomations()
    {
        start();
        fetch(snapshotText(1));
        delegate.frame().switchMode(OstrelMode::automations);
        answer(manyJobs());
        tab.refresh();
        settleBackground();
        settle();
    }

    void settle()
    {
        time.advance(platform::Seconds(0.01));
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    AutomationsTab& tab = delegate.automationsTab();
};

void renderPage(OpenAutomations& panel) { panel.tab.nextPage(); }

void renderSearch(OpenAutomations& panel)
{
    panel.tab.search(panel.tab.state().filter.query == "job-9" ? "box" : "job-9");
}

void renderDashboard(OpenAutomations& panel) { panel.delegate.frame().switchMode(OstrelMode::overview); }

void renderOpenRows(OpenAutomations& panel)
{
    if (panel.tab.state().expanded.empty()) {
        const AutomationsBody page = panel.tab.body();
        for (const AutomationRow& row : page.rows) {
            panel.answer(R"({"journal":[{"at":"2026-11-25T06:00:01Z","status":"ok","line":"done"}]})");
            panel.tab.toggleRow(row.item);
            panel.settleBackground();
        }
    }
    panel.delegate.frame().renderBody();
}

const bool registered = [] {
    using Work = void (*)(OpenAutomations&);
    for (const auto& [name, work] : std::initializer_list<std::pair<const char*, Work>> {
             { "a page", renderPage }, { "a search", renderSearch }, { "twelve open rows", renderOpenRows },
             { "the dashboard", renderDashboard } })
        benchmark::RegisterBenchmark((std::string("render body/10000 automations, ") + name).c_str(),
            [work = work](benchmark::State& state) {
                startToolkit();
                OpenAutomations panel;
                work(panel);
                panel.settle();
                measure(
                    state, [&] { work(panel); }, [&] { panel.settle(); });
            })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    return true;
}();

} // namespace
