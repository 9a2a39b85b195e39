// SPDX-License-Identifier: Apache-2.0
/// Starting children, and taking in what the collector printed.
#include "collector/OstrelData.h"
#include "core/Json.h"
#include "platform/linux/ChildLaunch.h"
#include "platform/linux/LinuxChildProcess.h"

#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <sys/wait.h>

namespace {

/// The processor time that starting a child takes its caller; waiting for the child's end isn't counted.
void startingAChild(benchmark::State& state)
{
    // A process of the instrument's size, since what a start costs may depend on it.
    const std::vector<char> ballast(std::size_t { 30 } << 20, 1);
    benchmark::DoNotOptimize(ballast.data());
    const platform::ChildRequest request { .executable = "/bin/true",
        .environment = platform::LinuxChildProcess().environment() };
    for (auto _ : state) {
        std::string error;
        const auto child = platform::launchChild(request, error);
        state.PauseTiming();
        if (child)
            ::waitpid(child->pid, nullptr, 0);
        state.ResumeTiming();
    }
}
BENCHMARK(startingAChild);

/// A snapshot with `processes` rows, from its bytes to the record.
void snapshotParse(benchmark::State& state)
{
    ostrel::json::Value snapshot { { "ts", "2026-11-17T19:40:07Z" }, { "ram", { { "total", 16.0 } } },
        { "swap", ostrel::json::Value::object() } };
    for (int row = 0; row < state.range(0); ++row)
        snapshot["procs"].push_back({ { "rss", 100 + row }, { "pid", std::to_string(row) },
            { "name", "python3" }, { "grp", "runtime" }, { "cmd", std::string(120, 'x') }, { "cpu", 1.5 } });
    const std::string text = ostrel::json::dump(snapshot);
    for (auto _ : state) {
        const auto object = ostrel::json::parseObject(text);
        benchmark::DoNotOptimize(ostrel::OstrelData::parse(*object));
    }
}
BENCHMARK(snapshotParse)->Arg(40)->Arg(500);

} // namespace
