// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/ProcFields.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <utility>

namespace platform {

namespace {

constexpr std::uint64_t largestKiB = std::uint64_t { 1 } << 53;

std::string_view skipBlanks(std::string_view text)
{
    const auto first = text.find_first_not_of(" \t");
    return first == std::string_view::npos ? std::string_view() : text.substr(first);
}

/// Takes an unsigned number, behind blanks, off the front of the text. Nothing, and the text as it was, when
/// none stands there or it doesn't fit.
std::optional<std::uint64_t> takeUnsigned(std::string_view& text)
{
    const auto rest = skipBlanks(text);
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
    if (error != std::errc())
        return std::nullopt;
    text = rest.substr(static_cast<std::size_t>(end - rest.data()));
    return value;
}

std::optional<double> leadingNumber(std::string_view text)
{
    const auto rest = skipBlanks(text);
    double value = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
    if (error != std::errc() || !std::isfinite(value) || value < 0)
        return std::nullopt;
    return value;
}

std::string_view takeLine(std::string_view& text)
{
    const auto end = text.find('\n');
    const auto line = text.substr(0, end);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    return line;
}

/// The average behind "avg10=" in the line that begins with `kind`.
std::optional<double> average10(std::string_view text, std::string_view kind)
{
    while (!text.empty()) {
        const auto line = takeLine(text);
        if (!line.starts_with(kind))
            continue;
        constexpr std::string_view mark = " avg10=";
        const auto at = line.find(mark);
        return at == std::string_view::npos ? std::nullopt : leadingNumber(line.substr(at + mark.size()));
    }
    return std::nullopt;
}

std::uint64_t minus(std::uint64_t from, std::uint64_t take) { return from > take ? from - take : 0; }

} // namespace

std::uint64_t MemInfo::usedKiB() const
{
    if (!memTotal || !memFree)
        return 0;
    const std::uint64_t fileCache = minus(cached.value_or(0), shmem.value_or(0));
    const std::uint64_t notUsed = *memFree + buffers.value_or(0) + fileCache + sReclaimable.value_or(0);
    return minus(*memTotal, notUsed);
}

std::uint64_t MemInfo::swapUsedKiB() const { return swapFree ? minus(swapTotal.value_or(0), *swapFree) : 0; }

std::optional<MemoryHeadroom> MemInfo::headroom() const
{
    if (!memTotal || *memTotal == 0 || (!memAvailable && !memFree))
        return std::nullopt;
    const std::uint64_t available = memAvailable
        ? *memAvailable
        : *memFree + buffers.value_or(0) + minus(cached.value_or(0), shmem.value_or(0));
    const auto share = [](std::uint64_t part, std::uint64_t whole) {
        return whole == 0 ? 0.0 : static_cast<double>(part) / static_cast<double>(whole);
    };
    return MemoryHeadroom { share(available, *memTotal), share(swapFree.value_or(0), swapTotal.value_or(0)) };
}

MemInfo parseMemInfo(std::string_view text)
{
    using Field = std::optional<std::uint64_t> MemInfo::*;
    static constexpr std::array<std::pair<std::string_view, Field>, 9> fields { {
        { "MemTotal:", &MemInfo::memTotal },
        { "MemFree:", &MemInfo::memFree },
        { "MemAvailable:", &MemInfo::memAvailable },
        { "Buffers:", &MemInfo::buffers },
        { "Cached:", &MemInfo::cached },
        { "SwapTotal:", &MemInfo::swapTotal },
        { "SwapFree:", &MemInfo::swapFree },
        { "Shmem:", &MemInfo::shmem },
        { "SReclaimable:", &MemInfo::sReclaimable },
    } };
    MemInfo info;
    std::size_t found = 0;
    while (!text.empty() && found < fields.size()) {
        const auto line = takeLine(text);
        for (const auto& [name, field] : fields) {
            if (!line.starts_with(name))
                continue;
            auto rest = line.substr(name.size());
            const auto value = takeUnsigned(rest);
            if (value && *value <= largestKiB)
                info.*field = *value;
            ++found;
            break;
        }
    }
    return info;
}

std::optional<CpuTimes> parseCpuLine(std::string_view text)
{
    constexpr std::string_view name = "cpu ";
    auto line = takeLine(text);
    if (!line.starts_with(name))
        return std::nullopt;
    line.remove_prefix(name.size());
    // user nice system idle iowait irq softirq steal; guest time, behind them, is already in user and nice.
    std::array<std::uint64_t, 8> field {};
    std::size_t count = 0;
    while (count < field.size()) {
        const auto value = takeUnsigned(line);
        if (!value)
            break;
        field[count++] = *value;
    }
    if (count < 4)
        return std::nullopt;
    return CpuTimes { .user = field[0],
        .system = field[2] + field[5] + field[6] + field[7],
        .idle = field[3] + field[4],
        .nice = field[1] };
}

std::optional<MemoryStall> parseMemoryStall(std::string_view text)
{
    const auto some = average10(text, "some ");
    const auto full = average10(text, "full ");
    if (!some || !full)
        return std::nullopt;
    return MemoryStall { *some, *full };
}

double parseLeadingNumber(std::string_view text) { return leadingNumber(text).value_or(0); }

std::optional<std::string_view> statField(std::string_view stat, int number)
{
    // The name in brackets may hold blanks and brackets itself.
    const auto bracket = stat.rfind(") ");
    if (bracket == std::string_view::npos)
        return std::nullopt;
    std::string_view rest = stat.substr(bracket + 2);
    for (int field = 3; field < number; ++field) {
        const auto blank = rest.find(' ');
        if (blank == std::string_view::npos)
            return std::nullopt;
        rest.remove_prefix(blank + 1);
    }
    return rest.substr(0, rest.find(' '));
}

} // namespace platform
