// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

#include <benchmark/benchmark.h>

/// Runs `work` once per iteration, `after` unmeasured, and reports the median and the 99th percentile.
template <typename Work, typename After>
void measure(benchmark::State& state, Work work, After after)
{
    std::vector<double> taken;
    for (auto _ : state) {
        const auto begin = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
        state.SetIterationTime(time.count());
        taken.push_back(time.count() * 1000);
        after();
    }
    std::ranges::sort(taken);
    const auto share = [&](double part) {
        return taken[static_cast<std::size_t>(part * static_cast<double>(taken.size() - 1))];
    };
    state.counters["median_ms"] = share(0.5);
    state.counters["p99_ms"] = share(0.99);
}
