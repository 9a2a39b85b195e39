// SPDX-License-Identifier: Apache-2.0
#include "collector/Diagnosis.h"

#include "core/Json.h"
#include "core/Text.h"
#include "core/Uuid.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include <fmt/format.h>

namespace ostrel {

namespace {

std::optional<DiagAction> action(const json::Value& entry, bool told)
{
    const auto label = json::text(entry, "label");
    const auto kind = json::text(entry, "kind");
    if (!label || !kind)
        return std::nullopt;
    DiagAction action { .id = freshUuid(),
        .label = *label,
        .kind = *kind,
        .target = json::textOr(entry, "target", ""),
        .estMB = json::integerOr(entry, "est_mb", 0),
        .reason = {},
        .risk = {} };
    if (told) {
        action.reason = json::textOr(entry, "reason", "");
        action.risk = json::textOr(entry, "risk", "");
    }
    return action;
}

/// `told`: whether the entries say their reason and their risk.
std::vector<DiagAction> actions(const json::Value* entries, bool told)
{
    std::vector<DiagAction> kept;
    if (!entries)
        return kept;
    for (const json::Value& entry : *entries)
        if (auto one = action(entry, told))
            kept.push_back(*std::move(one));
    return kept;
}

std::string findings(const json::Value* entries)
{
    std::vector<std::string> blocks;
    if (!entries)
        return {};
    for (const json::Value& entry : *entries)
        if (const auto title = json::text(entry, "title"))
            blocks.push_back(fmt::format("{} · {}\n{}", upperCased(json::textOr(entry, "level", "info")),
                *title, json::textOr(entry, "body", "")));
    return joined(blocks, "\n\n");
}

std::string counted(std::size_t actions)
{
    return fmt::format("{} {}", actions, actions == 1 ? "action" : "actions");
}

bool isArrayOfObjects(const json::Value& value)
{
    return value.is_array()
        && std::ranges::all_of(value, [](const json::Value& entry) { return entry.is_object(); });
}

} // namespace

Diagnosis readDiagnosis(std::string_view output, std::int32_t status, std::string_view source)
{
    const std::string_view text = isValidUtf8(output) ? output : std::string_view();
    Diagnosis diagnosis;
    if (status != 0 || text.empty()) {
        diagnosis.text = fmt::format("analysis failed (exit {}).", status);
        return diagnosis;
    }
    const auto value = json::parse(text);
    if (value && value->is_object()) {
        diagnosis.text = findings(json::array(*value, "findings"));
        diagnosis.actions = actions(json::array(*value, "actions"), true);
        diagnosis.summary = fmt::format("{} · {} · {}", json::textOr(*value, "source", source),
            json::textOr(*value, "summary", "analysis ready"), counted(diagnosis.actions.size()));
    } else if (value && isArrayOfObjects(*value)) {
        diagnosis.actions = actions(&*value, false);
        diagnosis.summary
            = fmt::format("legacy analyzer · {} · tap to execute", counted(diagnosis.actions.size()));
    } else {
        diagnosis.text = text;
    }
    return diagnosis;
}

} // namespace ostrel
