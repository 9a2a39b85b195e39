// SPDX-License-Identifier: Apache-2.0
/// What the panel costs: an opening up to its picture, a body built anew, a change of tab with its first
/// picture, and one live tick. A body may take 8 ms in 99 of 100 cases, a tick 1 ms, on a desktop of today.
#include "Measured.h"
#include "Toolkit.h"
#include "panel/PanelSize.h"
#include "views/AppBench.h"

#include <QCoreApplication>
#include <QImage>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

using namespace ostrel;

constexpr int processes = 500;

/// The minutes of a day, up to the present one.
std::string fullDay()
{
    OstrelHistory history;
    const std::int64_t now = OstrelHistory::minute(VirtualTime().now());
    for (std::int64_t minute = now - 1439; minute < now; ++minute)
        history.points.push_back({ minute, minute % 100, 24, 60, 2.4 });
    return history.serialized();
}

/// An object of that many alike elements, as a script prints it.
std::string listText(const std::string& key, int count, const std::string& element)
{
    std::string all;
    for (int at = 0; at < count; ++at)
        all += (at > 0 ? "," : "") + element;
    return "\"" + key + "\":[" + all + "]";
}

/// What the janitor's script says of a machine with much to do.
std::string janitorAnswer(const std::string& command)
{
    if (command == "findings")
        return "{"
            + listText("findings", 12,
                R"({"level":"warning","title":"t","seen":"s","source":"s","action":{"kind":"clean"}})")
            + "}";
    if (command == "preview")
        return R"({"title":"old files","count":500,"size_mb":2048,)"
            + listText("files", 500, R"({"path":"~/.claude/logs/one/of/many.log","mb":4,"age_days":20})")
            + "}";
    if (command == "receipts")
        return "{" + listText("receipts", 12, R"({"ts":"now","kind":"stop","name":"node","pid":70})") + "}";
    return command == "groups" ? R"({"groups":["agent-screenshots","app-caches","product-builds"]})" : "";
}

/// The application with its panel open on a snapshot of many rows, unless another start is wished for.
struct OpenPanel : AppBench {
    explicit OpenPanel(const LaunchWish& wish = {})
    {
        children.whileRunning = [this] {
            const std::string reply = janitorAnswer(children.requests.back().arguments.at(1));
            if (!reply.empty())
                answer(reply);
        };
        files.contents[OstrelHistory::defaultPath(files.home)] = fullDay();
        start(wish);
        fetch(snapshotText(processes));
        workspace.setReduceMotion(true);
        settle();
    }

    void settle()
    {
        time.advance(platform::Seconds(0.01));
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void paint() { root().render(&picture); }

    QImage picture { panelWidth, panelHeight, QImage::Format_ARGB32_Premultiplied };
};

void renderBody(benchmark::State& state, OstrelMode mode)
{
    OpenPanel panel;
    panel.delegate.frame().switchMode(mode);
    for (const auto group : agentGroups) {
        panel.delegate.janitorTab().pressFiles(std::string(group));
        panel.deliver();
    }
    panel.settle();
    measure(
        state, [&] { panel.delegate.frame().renderBody(); }, [&] { panel.settle(); });
}

void switchTab(benchmark::State& state)
{
    OpenPanel panel;
    std::size_t tab = 0;
    measure(
        state,
        [&] {
            tab = (tab + 1) % ostrelModeCount;
            panel.delegate.frame().switchMode(ostrelModes()[tab].mode);
            panel.paint();
        },
        [&] { panel.settle(); });
}

void openFirst(benchmark::State& state)
{
    std::optional<OpenPanel> panel;
    const auto anew = [&] {
        panel.reset();
        panel.emplace(LaunchWish { .background = true });
    };
    anew();
    measure(
        state,
        [&] {
            panel->delegate.panel().show();
            panel->paint();
        },
        anew);
}

void openAgain(benchmark::State& state)
{
    OpenPanel panel;
    panel.delegate.frame().switchMode(OstrelMode::processes);
    const auto close = [&] {
        panel.delegate.panel().close("x");
        panel.settle();
    };
    close();
    measure(
        state,
        [&] {
            panel.delegate.panel().show();
            panel.paint();
        },
        close);
}

void liveTick(benchmark::State& state, OstrelMode mode)
{
    OpenPanel panel;
    panel.delegate.frame().switchMode(mode);
    panel.settle();
    std::uint32_t busy = 0;
    measure(
        state,
        [&] {
            panel.delegate.tick().tickNative();
            // The window paints what the tick has changed, and nothing else.
            QCoreApplication::processEvents();
        },
        [&] {
            // Another share each time, so that every figure and gauge of it changes.
            busy = (busy + 37) % 100;
            panel.kernel.ticks->user += busy;
            panel.kernel.ticks->idle += 100 - busy;
            panel.settle();
        });
}

/// The processes under the filter that has to judge each of them.
void renderStoppable(benchmark::State& state)
{
    OpenPanel panel;
    panel.delegate.frame().switchMode(OstrelMode::processes);
    panel.root().findChild<QAbstractButton*>("stoppable")->click();
    panel.settle();
    measure(
        state, [&] { panel.delegate.frame().renderBody(); }, [&] { panel.settle(); });
}

const bool registered = [] {
    for (const OstrelModeWords& words : ostrelModes())
        benchmark::RegisterBenchmark(("render body/" + std::string(words.title)).c_str(),
            [mode = words.mode](benchmark::State& state) {
                startToolkit();
                renderBody(state, mode);
            })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    using Measured = void (*)(benchmark::State&);
    for (const auto& [name, measured] :
        std::initializer_list<std::pair<const char*, Measured>> {
            { "open for the first time and paint", openFirst }, { "open again and paint", openAgain },
            { "render body/processes that can stop", renderStoppable }, { "switch tab and paint", switchTab },
            { "live tick and paint, dashboard",
                [](benchmark::State& state) { liveTick(state, OstrelMode::overview); } },
            { "live tick and paint, system",
                [](benchmark::State& state) { liveTick(state, OstrelMode::system); } } })
        benchmark::RegisterBenchmark(name,
            [measured = measured](benchmark::State& state) {
                startToolkit();
                measured(state);
            })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    return true;
}();

} // namespace
