// SPDX-License-Identifier: Apache-2.0
#include "automations/AutomationRecords.h"

#include <array>
#include <string_view>
#include <utility>

namespace ostrel {

namespace {

/// A member of a record and the key that fills it.
template <typename Record, typename Member>
struct Field {
    std::string_view key;
    Member Record::*member;
};

constexpr std::array<Field<Automation, std::string>, 20> automationTexts { {
    { "lane", &Automation::lane },
    { "lane_title", &Automation::laneTitle },
    { "id", &Automation::id },
    { "title", &Automation::title },
    { "schedule", &Automation::schedule },
    { "state", &Automation::state },
    { "executor", &Automation::executor },
    { "host", &Automation::host },
    { "owner", &Automation::owner },
    { "registry", &Automation::registry },
    { "family", &Automation::family },
    { "tag", &Automation::tag },
    { "observation", &Automation::observation },
    { "location", &Automation::location },
    { "migration", &Automation::migration },
    { "registry_state", &Automation::registryState },
    { "target", &Automation::target },
    { "last_run", &Automation::lastRun },
    { "last_result", &Automation::lastResult },
    { "next_run", &Automation::nextRun },
} };

constexpr std::array<Field<Automation, bool>, 3> automationFlags { {
    { "active", &Automation::active },
    { "can_run", &Automation::canRun },
    { "toggles", &Automation::toggles },
} };

/// The records of an array of objects.
template <typename Record>
std::vector<Record> records(const json::Value& object, std::string_view key)
{
    std::vector<Record> read;
    for (const json::Value* element : objectsIn(object, key))
        read.push_back(Record::parse(*element));
    return read;
}

std::vector<std::string> texts(const json::Value& object, std::string_view key)
{
    std::vector<std::string> read;
    const json::Value* array = json::array(object, key);
    if (!array)
        return read;
    for (const json::Value& element : *array) {
        auto text = json::asText(element);
        if (!text)
            return {};
        read.push_back(std::move(*text));
    }
    return read;
}

bool contains(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

} // namespace

std::vector<const json::Value*> objectsIn(const json::Value& object, std::string_view key)
{
    std::vector<const json::Value*> found;
    const json::Value* array = json::array(object, key);
    if (!array)
        return found;
    found.reserve(array->size());
    for (const json::Value& element : *array) {
        if (!element.is_object())
            return {};
        found.push_back(&element);
    }
    return found;
}

Automation Automation::parse(const json::Value& object)
{
    Automation item;
    for (const auto& [key, member] : automationTexts)
        if (auto text = json::text(object, key))
            item.*member = std::move(*text);
    for (const auto& [key, member] : automationFlags)
        item.*member = json::boolean(object, key).value_or(false);
    return item;
}

bool Automation::unverified() const
{
    return contains(observation, "unverified") || contains(observation, "unobserved");
}

AutomationVoxelState Automation::voxelState() const
{
    if (unverified())
        return AutomationVoxelState::unobserved;
    if (lastRunFailed())
        return AutomationVoxelState::failed;
    if (lastResult == "unobserved" && !active)
        return AutomationVoxelState::unobserved;
    return active ? AutomationVoxelState::active : AutomationVoxelState::paused;
}

AutomationLane AutomationLane::parse(const json::Value& object)
{
    return { .key = json::textOr(object, "key", ""),
        .title = json::textOr(object, "title", ""),
        .owner = json::textOr(object, "owner", ""),
        .registry = json::textOr(object, "registry", ""),
        .count = json::integerOr(object, "count", 0),
        .observed = json::boolean(object, "observed").value_or(false),
        .note = json::textOr(object, "note", "") };
}

AutomationRun AutomationRun::parse(const json::Value& object)
{
    return { .at = json::textOr(object, "at", ""),
        .status = json::textOr(object, "status", ""),
        .line = json::textOr(object, "line", "") };
}

AutomationJournal AutomationJournal::unread(const Automation& item)
{
    return { .runs = {}, .lastRun = item.lastRun, .lastResult = item.lastResult, .nextRun = item.nextRun };
}

AutomationJournal AutomationJournal::parse(const json::Value& answer, const Automation& item)
{
    return { .runs = records<AutomationRun>(answer, "journal"),
        .lastRun = json::textOr(answer, "last_run", item.lastRun),
        .lastResult = json::textOr(answer, "last_result", item.lastResult),
        .nextRun = json::textOr(answer, "next_run", item.nextRun) };
}

AutomationActionResult AutomationActionResult::unanswered(const std::string& op)
{
    return { .ok = false, .op = op, .message = "the bridge did not answer", .receipt = "" };
}

AutomationActionResult AutomationActionResult::parse(
    const json::Value& answer, const std::string& op, const std::string& title)
{
    AutomationActionResult result { .ok = json::boolean(answer, "ok").value_or(false),
        .op = op,
        .message = "",
        .receipt = json::textOr(answer, "receipt", "") };
    if (result.ok) {
        result.message = json::text(answer, "message").value_or(op + " · " + title);
        return result;
    }
    for (const std::string_view key : { "error", "stderr" })
        if (result.message.empty())
            result.message = json::textOr(answer, key, "");
    if (result.message.empty())
        result.message = "the command returned an error";
    return result;
}

AutomationsSnapshot AutomationsSnapshot::unavailable()
{
    AutomationsSnapshot snapshot;
    snapshot.error = "inventory unavailable";
    return snapshot;
}

AutomationsSnapshot AutomationsSnapshot::parse(const json::Value& answer)
{
    AutomationsSnapshot snapshot;
    snapshot.ok = json::boolean(answer, "ok").value_or(false);
    snapshot.error = json::textOr(answer, "error", "");
    snapshot.generatedAt = json::textOr(answer, "generated_at", "");
    snapshot.readAt = json::textOr(answer, "read_at", "");
    if (const json::Value* counts = json::object(answer, "counts")) {
        snapshot.total = json::integerOr(*counts, "total", 0);
        snapshot.active = json::integerOr(*counts, "active", 0);
    }
    snapshot.alerts = texts(answer, "alerts");
    snapshot.lanes = records<AutomationLane>(answer, "lanes");
    snapshot.items = records<Automation>(answer, "automations");
    for (const json::Value* quota : objectsIn(answer, "quotas"))
        snapshot.quotas.push_back(*quota);
    return snapshot;
}

} // namespace ostrel
