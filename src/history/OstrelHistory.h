// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Clock.h"
#include "platform/FileManager.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// One point per minute of what the native tick saw, for at most 24 hours, kept in a small file. A plain
/// value: a background job saves a copy.
struct OstrelHistory {
    /// One minute. Percentages and the one-minute load average.
    struct Point {
        std::int64_t minute = 0; ///< whole minutes since 1970 in UTC
        std::int64_t cpu = 0;
        std::int64_t swap = 0;
        std::int64_t ram = 0;
        double load = 0;

        bool operator==(const Point&) const = default;
    };

    static constexpr std::size_t capacity = 1440;

    /// The file's place below a home directory; empty without one, and then nothing is kept on disk.
    [[nodiscard]] static std::string defaultPath(const std::string& home);
    /// The minute that an instant falls into.
    [[nodiscard]] static std::int64_t minute(platform::Instant of);

    /// Keeps a reading. A second one within the minute replaces the first, one from an earlier minute is
    /// dropped. True only when a new minute was opened: that is when the caller saves.
    bool record(std::int64_t cpu, std::int64_t swap, std::int64_t ram, double load, platform::Instant at);
    /// Drops what is older than 24 hours, and the oldest beyond the capacity.
    void prune(std::int64_t now);

    /// From the first minute to the last, gaps counted; 0 with no points.
    [[nodiscard]] std::int64_t spanMinutes() const;
    /// Points gathered by this run.
    [[nodiscard]] std::size_t liveCount() const;
    /// The points of the last `minutes` minutes of the record, measured from its newest point.
    [[nodiscard]] std::vector<Point> window(std::int64_t minutes) const;
    /// Where in that window this run begins; nothing when all of it, or none, is of this run.
    [[nodiscard]] std::optional<std::size_t> liveBoundary(std::int64_t minutes) const;

    /// The points of a file's text, ascending; two of one minute keep the file's order. A line that isn't a
    /// point, or has a percentage beyond 64 bits, is skipped. Values aren't clamped.
    [[nodiscard]] static std::vector<Point> parse(std::string_view text);
    /// The whole file's text.
    [[nodiscard]] std::string serialized() const;

    /// The history in the file; an empty one when the file can't be read or isn't UTF-8.
    [[nodiscard]] static OstrelHistory load(
        const platform::FileManager& files, const std::string& path, platform::Instant now);
    /// Replaces the file, and makes its folder. A failure is ignored: the next minute tries again. Any
    /// thread.
    void save(platform::FileManager& files, const std::string& path) const;

    std::vector<Point> points; ///< ascending by minute
    std::size_t restored = 0; ///< how many of the oldest points came from the file
};

/// The span that the dashboard's graphs show.
inline constexpr std::int64_t historyWindowMinutes = 120;

/// The caption under the graphs: what of the window was restored, and what this run gathered.
[[nodiscard]] std::string historyCaption(const OstrelHistory& history, std::int64_t minutes);

} // namespace ostrel
