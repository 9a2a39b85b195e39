// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Clock.h"

#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// The line below a value that says where it comes from and how old it is.
struct SourceLine {
    std::string text;
    std::string toolTip; ///< the source in full

    bool operator==(const SourceLine&) const = default;
};

/// A value with what it is called and where it comes from.
struct SourcedRow {
    std::string label;
    std::string value;
    SourceLine source;

    bool operator==(const SourcedRow&) const = default;
};

/// What a source says before its first ";".
[[nodiscard]] std::string_view shortSource(std::string_view source);

/// A row with its source. Without a value it shows a dash, and the line says that nothing was measured.
[[nodiscard]] SourcedRow kvSourced(std::string_view label, const std::optional<std::string>& value,
    const std::optional<std::string>& source, std::string_view age);

/// The source of what stands above it.
[[nodiscard]] SourceLine sourceLine(const std::optional<std::string>& source, std::string_view age);

/// The age of a native value: no older than the tick's period.
[[nodiscard]] std::string nativeAge(platform::Seconds nativeInterval);

/// The age of what a snapshot holds; `age` as in "12s ago".
[[nodiscard]] std::string snapshotAgeOr(
    const std::optional<std::string>& age, std::string_view none = "no snapshot yet");

} // namespace ostrel
