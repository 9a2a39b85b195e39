// SPDX-License-Identifier: Apache-2.0
/// Two hours of minutes drawn at two pixels a point: what a changed minute costs an open panel, which has 1
/// ms for a tick. And a million samples, which are drawn as no more than the pixels can show.
#include "Toolkit.h"
#include "history/OstrelHistoryView.h"

#include <QImage>

#include <cstddef>
#include <cstdint>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

using namespace ostrel;

constexpr int width = 352;
constexpr int height = 76;
constexpr int ratio = 2;

void drawGraph(benchmark::State& state)
{
    startToolkit();
    const auto count = static_cast<std::size_t>(state.range(0));
    std::vector<double> samples(count);
    for (std::size_t n = 0; n < count; ++n)
        samples[n] = static_cast<double>(n * 7919 % 101);
    OstrelHistoryView view(samples, std::vector<std::int64_t>(count), "CPU", width, height, count / 2);
    QImage picture(width * ratio, height * ratio, QImage::Format_ARGB32_Premultiplied);
    picture.setDevicePixelRatio(ratio);
    for (auto _ : state)
        view.render(&picture);
}
BENCHMARK(drawGraph)->Arg(120)->Arg(1'000'000)->Unit(benchmark::kMicrosecond);

} // namespace
