// SPDX-License-Identifier: Apache-2.0
#include "janitor/JanitorRecords.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace ostrel {

namespace {

using Kind = JanitorAction::Kind;

constexpr std::array<std::pair<std::string_view, Kind>, 4> kinds { {
    { "none", Kind::none },
    { "open-tab", Kind::openTab },
    { "kill", Kind::kill },
    { "clean", Kind::clean },
} };

Kind kindOf(std::string_view word)
{
    const auto* found = std::ranges::find(kinds, word, &std::pair<std::string_view, Kind>::first);
    return found == kinds.end() ? Kind::none : found->second;
}

/// The objects of an array, `most` at most, each read by `Record::parse`.
template <typename Record>
std::vector<Record> records(const json::Value& object, std::string_view key, std::size_t most = SIZE_MAX)
{
    std::vector<Record> read;
    const json::Value* array = json::array(object, key);
    if (!array)
        return read;
    for (const json::Value& element : *array) {
        if (read.size() == most)
            break;
        if (element.is_object())
            read.push_back(Record::parse(element));
    }
    return read;
}

} // namespace

JanitorAction JanitorAction::parse(const json::Value& object)
{
    JanitorAction action { .kind = kindOf(json::textOr(object, "kind", "none")),
        .target = json::textOr(object, "target", ""),
        .group = json::textOr(object, "group", ""),
        .pids = {} };
    if (const json::Value* pids = json::array(object, "pids"))
        for (const json::Value& element : *pids)
            if (const auto pid = json::asInteger(element))
                action.pids.push_back(*pid);
    return action;
}

JanitorFinding JanitorFinding::parse(const json::Value& object)
{
    JanitorFinding finding;
    finding.id = json::textOr(object, "id", finding.id);
    finding.level = json::textOr(object, "level", finding.level);
    finding.title = json::textOr(object, "title", "");
    finding.seen = json::textOr(object, "seen", "");
    finding.source = json::textOr(object, "source", "");
    finding.proposal = json::textOr(object, "proposal", "");
    if (const json::Value* action = json::object(object, "action"))
        finding.action = JanitorAction::parse(*action);
    finding.estMB = json::numberOr(object, "est_mb", 0);
    finding.count = json::integerOr(object, "count", 0);
    return finding;
}

LevelColor JanitorFinding::levelColor() const
{
    if (level == "critical")
        return LevelColor::red;
    return level == "warning" ? LevelColor::ink : LevelColor::muted;
}

JanitorFile JanitorFile::parse(const json::Value& object)
{
    return { .path = json::textOr(object, "path", ""),
        .mb = json::numberOr(object, "mb", 0),
        .ageDays = json::integerOr(object, "age_days", 0) };
}

JanitorPreview JanitorPreview::parse(const json::Value& object, std::string_view group)
{
    return { .group = json::textOr(object, "group", group),
        .title = json::textOr(object, "title", group),
        .count = json::integerOr(object, "count", 0),
        .sizeMB = json::numberOr(object, "size_mb", 0),
        .files = records<JanitorFile>(object, "files", mostFiles),
        .error = json::textOr(object, "error", "") };
}

JanitorPreview JanitorPreview::failed(std::string_view group, std::string_view error)
{
    return { .group = std::string(group),
        .title = std::string(group),
        .count = 0,
        .sizeMB = 0,
        .files = {},
        .error = std::string(error) };
}

JanitorProcess JanitorProcess::parse(const json::Value& object)
{
    return { .pid = json::integerOr(object, "pid", 0),
        .name = json::textOr(object, "name", ""),
        .rssMB = json::integerOr(object, "rss_mb", 0),
        .cmd = json::textOr(object, "cmd", ""),
        .reason = json::textOr(object, "reason", ""),
        .start = json::integerOr(object, "start", 0) };
}

JanitorKillPreview JanitorKillPreview::parse(const json::Value& object)
{
    return { .allowed = records<JanitorProcess>(object, "allowed"),
        .refused = records<JanitorProcess>(object, "refused") };
}

std::int64_t JanitorKillPreview::rssMB() const { return rssMBOf(allowed); }

std::int64_t rssMBOf(const std::vector<JanitorProcess>& processes)
{
    std::int64_t sum = 0;
    for (const JanitorProcess& process : processes) {
        const std::int64_t more = process.rssMB;
        if (more > 0)
            sum = sum > INT64_MAX - more ? INT64_MAX : sum + more;
        else
            sum = sum < INT64_MIN - more ? INT64_MIN : sum + more;
    }
    return sum;
}

JanitorCleanResult JanitorCleanResult::parse(
    const json::Value& object, std::string_view group, std::string receipt)
{
    return { .title = json::textOr(object, "title", group),
        .removed = json::integerOr(object, "removed", 0),
        .freedMB = json::numberOr(object, "freed_mb", 0),
        .failedCount = json::integerOr(object, "failed_count", 0),
        .error = json::textOr(object, "error", ""),
        .receipt = std::move(receipt) };
}

JanitorCleanResult JanitorCleanResult::failed(std::string_view error)
{
    JanitorCleanResult result;
    result.title = error;
    result.error = error;
    return result;
}

CacheCandidate CacheCandidate::parse(const json::Value& object)
{
    return { .name = json::textOr(object, "name", ""), .sizeMB = json::numberOr(object, "size_mb", 0) };
}

JanitorGroups JanitorGroups::parse(const json::Value& object)
{
    JanitorGroups groups;
    if (const json::Value* names = json::array(object, "groups"))
        for (const json::Value& element : *names)
            if (auto name = json::asText(element))
                groups.names.push_back(std::move(*name));
    if (const json::Value* titles = json::object(object, "titles"))
        for (const auto& [group, value] : titles->items())
            if (auto title = json::asText(value))
                groups.titles.emplace(group, std::move(*title));
    return groups;
}

std::vector<JanitorFinding> parseFindings(const json::Value& object)
{
    return records<JanitorFinding>(object, "findings");
}

std::vector<CacheCandidate> parseCandidates(const json::Value& object)
{
    return records<CacheCandidate>(object, "candidates");
}

} // namespace ostrel
