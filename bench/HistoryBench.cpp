// SPDX-License-Identifier: Apache-2.0
/// What a minute costs: writing the whole day's file, and reading it at start.
#include "history/OstrelHistory.h"
#include "platform/linux/LinuxFileManager.h"

#include <cstdlib>
#include <filesystem>
#include <string>

#include <benchmark/benchmark.h>

namespace {

ostrel::OstrelHistory fullDay()
{
    ostrel::OstrelHistory history;
    for (std::int64_t minute = 0; minute < static_cast<std::int64_t>(ostrel::OstrelHistory::capacity);
         ++minute)
        history.points.push_back({ 28'000'000 + minute, minute % 100, 24, 60, 2.4 });
    return history;
}

void historySave(benchmark::State& state)
{
    std::string pattern = (std::filesystem::temp_directory_path() / "ostrel-bench.XXXXXX").string();
    const std::string folder = ::mkdtemp(pattern.data());
    platform::LinuxFileManager disk;
    const auto history = fullDay();
    for (auto _ : state)
        history.save(disk, folder + "/history.jsonl");
    std::filesystem::remove_all(folder);
}
BENCHMARK(historySave);

void historyParse(benchmark::State& state)
{
    const std::string text = fullDay().serialized();
    for (auto _ : state)
        benchmark::DoNotOptimize(ostrel::OstrelHistory::parse(text));
}
BENCHMARK(historyParse);

} // namespace
