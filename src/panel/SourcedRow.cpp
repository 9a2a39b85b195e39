// SPDX-License-Identifier: Apache-2.0
#include "panel/SourcedRow.h"

#include "core/Text.h"

#include <cmath>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr std::string_view noMethod = "the collector published no method for this reading";

std::string published(const std::optional<std::string>& source, std::string_view age)
{
    if (!source)
        return "src: not published by the collector";
    return fmt::format("src: {} · {}", shortSource(*source), age);
}

std::string unmeasured(const std::optional<std::string>& source)
{
    if (!source)
        return "not measured · the collector publishes no method for this reading";
    return fmt::format("not measured this run · {}", shortSource(*source));
}

} // namespace

std::string_view shortSource(std::string_view source) { return trimmed(source.substr(0, source.find(';'))); }

SourcedRow kvSourced(std::string_view label, const std::optional<std::string>& value,
    const std::optional<std::string>& source, std::string_view age)
{
    return { std::string(label), value.value_or("–"),
        { value ? published(source, age) : unmeasured(source), source.value_or(std::string(noMethod)) } };
}

SourceLine sourceLine(const std::optional<std::string>& source, std::string_view age)
{
    return { published(source, age), source ? fmt::format("{}\n{}", *source, age) : std::string(noMethod) };
}

std::string nativeAge(platform::Seconds nativeInterval)
{
    return fmt::format("native · {}s tick", rounded(std::trunc(nativeInterval.count())));
}

std::string snapshotAgeOr(const std::optional<std::string>& age, std::string_view none)
{
    return age ? *age : std::string(none);
}

} // namespace ostrel
