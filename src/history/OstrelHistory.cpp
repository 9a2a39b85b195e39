// SPDX-License-Identifier: Apache-2.0
#include "history/OstrelHistory.h"

#include "core/Json.h"
#include "core/Text.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <fmt/format.h>

namespace ostrel {

namespace {

/// 1440 lines take under 100 kB; a file of this size isn't ours.
constexpr std::size_t longestFile = std::size_t { 16 } * 1024 * 1024;
constexpr int moreReadings = 2;

/// A double beyond this has no fraction left, and a foreign line's 1e308 would print as 309 digits at every
/// save.
constexpr double largestPrintedLoad = 1e15;

constexpr std::int64_t minutesKept = OstrelHistory::capacity;

std::optional<OstrelHistory::Point> parseLine(std::string_view line)
{
    const auto object = json::parseObject(line);
    if (!object)
        return std::nullopt;
    const auto minute = json::integer(*object, "m");
    if (!minute)
        return std::nullopt;
    OstrelHistory::Point point { .minute = *minute };
    using Field = std::int64_t OstrelHistory::Point::*;
    for (const auto& [key, field] : { std::pair<const char*, Field> { "cpu", &OstrelHistory::Point::cpu },
             { "swap", &OstrelHistory::Point::swap }, { "ram", &OstrelHistory::Point::ram } })
        if (const json::Value* value = json::member(*object, key); value && value->is_number()) {
            const auto whole = json::asTruncated(*value);
            if (!whole)
                return std::nullopt;
            point.*field = *whole;
        }
    point.load = json::numberOr(*object, "load", 0);
    return point;
}

/// a − b, held at the ends of the range: minutes from a file may lie anywhere in 64 bits.
std::int64_t minus(std::int64_t a, std::int64_t b)
{
    std::int64_t difference = 0;
    if (!__builtin_sub_overflow(a, b, &difference))
        return difference;
    return a > b ? INT64_MAX : INT64_MIN;
}

} // namespace

std::string OstrelHistory::defaultPath(const std::string& home)
{
    return home.empty() ? std::string()
                        : home + "/Library/Application Support/ostrel/dashboard-history.jsonl";
}

std::int64_t OstrelHistory::minute(platform::Instant of)
{
    return std::chrono::floor<std::chrono::minutes>(of).time_since_epoch().count();
}

bool OstrelHistory::record(
    std::int64_t cpu, std::int64_t swap, std::int64_t ram, double load, platform::Instant at)
{
    const auto percent = [](std::int64_t value) { return std::clamp<std::int64_t>(value, 0, 100); };
    const Point point { .minute = minute(at),
        .cpu = percent(cpu),
        .swap = percent(swap),
        .ram = percent(ram),
        .load = std::max(0.0, load) };
    if (!points.empty() && points.back().minute >= point.minute) {
        // A clock that was set back gives no new points until it has caught up.
        if (points.back().minute == point.minute)
            points.back() = point;
        return false;
    }
    points.push_back(point);
    prune(point.minute);
    return true;
}

void OstrelHistory::prune(std::int64_t now)
{
    const std::int64_t cutoff = minus(now, minutesKept);
    std::size_t removed = 0;
    while (
        removed < points.size() && (points[removed].minute <= cutoff || points.size() - removed > capacity))
        ++removed;
    points.erase(points.begin(), points.begin() + static_cast<std::ptrdiff_t>(removed));
    restored = std::min(restored - std::min(restored, removed), points.size());
}

std::int64_t OstrelHistory::spanMinutes() const
{
    if (points.empty())
        return 0;
    const std::int64_t span = minus(points.back().minute, points.front().minute);
    return span == INT64_MAX ? span : span + 1;
}

std::size_t OstrelHistory::liveCount() const { return points.size() - std::min(restored, points.size()); }

std::vector<OstrelHistory::Point> OstrelHistory::window(std::int64_t minutes) const
{
    if (points.empty())
        return {};
    const std::int64_t before = minus(points.back().minute, minutes);
    std::vector<Point> shown;
    std::ranges::copy_if(
        points, std::back_inserter(shown), [before](const Point& p) { return p.minute > before; });
    return shown;
}

std::optional<std::size_t> OstrelHistory::liveBoundary(std::int64_t minutes) const
{
    if (restored == 0 || liveCount() == 0)
        return std::nullopt;
    const std::int64_t firstLive = points[restored].minute;
    const auto shown = window(minutes);
    const auto at
        = std::ranges::find_if(shown, [firstLive](const Point& p) { return p.minute >= firstLive; });
    if (at == shown.end() || at == shown.begin())
        return std::nullopt;
    return static_cast<std::size_t>(at - shown.begin());
}

std::vector<OstrelHistory::Point> OstrelHistory::parse(std::string_view text)
{
    std::vector<Point> points;
    while (!text.empty()) {
        const auto end = text.find('\n');
        if (const auto point = parseLine(text.substr(0, end)))
            points.push_back(*point);
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    }
    std::ranges::stable_sort(points, {}, &Point::minute);
    return points;
}

std::string OstrelHistory::serialized() const
{
    std::string text;
    // A string each, since writing straight into the text would bring the formatting library's inner half
    // into the program, eighty kilobytes of it.
    for (const Point& p : points)
        text += fmt::format(R"({{"m":{},"cpu":{},"swap":{},"ram":{},"load":{:.2f}}})"
                            "\n",
            p.minute, p.cpu, p.swap, p.ram, std::clamp(p.load, -largestPrintedLoad, largestPrintedLoad));
    return text;
}

OstrelHistory OstrelHistory::load(
    const platform::FileManager& files, const std::string& path, platform::Instant now)
{
    OstrelHistory history;
    auto text = files.read(path, longestFile);
    // The next minute replaces the file, so a day would be lost with one reading that failed by chance.
    for (int more = moreReadings; !text && more > 0 && files.fileExists(path); --more)
        text = files.read(path, longestFile);
    if (!text || !isValidUtf8(*text))
        return history;
    history.points = parse(*text);
    history.prune(minute(now));
    history.restored = history.points.size();
    return history;
}

void OstrelHistory::save(platform::FileManager& files, const std::string& path) const
{
    if (path.empty())
        return;
    files.createDirectories(platform::parentDirectory(path));
    files.replace(path, serialized());
}

std::string historyCaption(const OstrelHistory& history, std::int64_t minutes)
{
    const auto visible = history.window(minutes);
    if (visible.empty())
        return "empty · the first minute is being recorded";
    const std::int64_t span = visible.back().minute - visible.front().minute + 1;
    const std::size_t allRestored = history.liveCount() == 0 ? visible.size() : 0;
    const std::size_t restored = history.liveBoundary(minutes).value_or(allRestored);
    return fmt::format("{} min shown · {} restored + {} this run · {} min kept of 1440", span, restored,
        visible.size() - restored, history.points.size());
}

} // namespace ostrel
