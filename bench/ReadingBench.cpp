// SPDX-License-Identifier: Apache-2.0
/// The native reading, beside the least that any program must do to get the same figures.
#include "platform/linux/LinuxKernel.h"
#include "readings/CPUSampler.h"
#include "readings/NativeStats.h"

#include <array>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr std::array files { "/proc/meminfo", "/proc/stat", "/proc/loadavg", "/proc/pressure/memory" };

void barePread(benchmark::State& state)
{
    std::array<int, files.size()> open {};
    for (std::size_t at = 0; at < files.size(); ++at)
        open[at] = ::open(files[at], O_RDONLY | O_CLOEXEC);
    std::array<char, 4096> buffer {};
    for (auto _ : state)
        for (const int fd : open)
            benchmark::DoNotOptimize(::pread(fd, buffer.data(), buffer.size(), 0));
    for (const int fd : open)
        ::close(fd);
}
BENCHMARK(barePread);

void openReadClose(benchmark::State& state)
{
    std::array<char, 4096> buffer {};
    for (auto _ : state)
        for (const char* file : files) {
            const int fd = ::open(file, O_RDONLY | O_CLOEXEC);
            benchmark::DoNotOptimize(::read(fd, buffer.data(), buffer.size()));
            ::close(fd);
        }
}
BENCHMARK(openReadClose);

void nativeReading(benchmark::State& state)
{
    platform::LinuxKernel kernel;
    ostrel::CPUSampler sampler(kernel);
    for (auto _ : state) {
        benchmark::DoNotOptimize(sampler.sample());
        benchmark::DoNotOptimize(ostrel::readNativeStats(kernel));
    }
}
BENCHMARK(nativeReading);

} // namespace
