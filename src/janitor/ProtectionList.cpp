// SPDX-License-Identifier: Apache-2.0
#include "janitor/ProtectionList.h"

#include "core/Text.h"

#include <algorithm>
#include <cstddef>

namespace ostrel {

namespace {

constexpr std::string_view daemonPrefix = "com.apple.";

/// Whether a row is a whole word of the line, or ends a path in it. Both are in lower case.
bool standsIn(std::string_view row, std::string_view line)
{
    for (std::size_t at = line.find(row); at != std::string_view::npos; at = line.find(row, at + 1)) {
        const auto before = line.substr(0, at);
        const auto behind = line.substr(at + row.size());
        if ((before.empty() || before.back() == '/' || endsInBlank(before))
            && (behind.empty() || beginsWithBlank(behind)))
            return true;
    }
    return false;
}

/// The first word of a command line. Blanks alone separate: a tab belongs to a word.
std::string_view executable(std::string_view cmd)
{
    cmd.remove_prefix(std::min(cmd.find_first_not_of(' '), cmd.size()));
    return cmd.substr(0, cmd.find(' '));
}

template <typename Names>
bool holds(const Names& names, std::string_view name)
{
    return std::ranges::find(names, name) != names.end();
}

std::vector<std::string> loweredAll(std::vector<std::string> names)
{
    for (std::string& name : names)
        name = lowered(name);
    return names;
}

} // namespace

bool ProtectionRules::protects(std::string_view name, std::string_view cmd) const
{
    const auto first = executable(cmd);
    if (std::ranges::any_of(
            ProtectionList::pathPrefixes, [first](auto prefix) { return first.starts_with(prefix); })
        || name.starts_with(daemonPrefix))
        return true;
    const std::string lowerName = lowered(name);
    const std::string lowerCmd = lowered(cmd);
    return std::ranges::any_of(
        rows_, [&](const std::string& row) { return lowerName == row || standsIn(row, lowerCmd); });
}

bool ProtectionList::isProtected(std::string_view name, std::string_view cmd) const
{
    return rules().protects(name, cmd);
}

ProtectionRules ProtectionList::rules() const { return ProtectionRules(effective()); }

void ProtectionList::add(std::string_view name)
{
    const std::string row = lowered(trimmed(name));
    if (row.empty() || holds(effective(), row))
        return;
    auto off = disabled();
    std::erase_if(off, [&row](const std::string& other) { return lowered(other) == row; });
    store(disabledKey, off);
    if (isLocked(row) || holds(editableDefaults, row))
        return;
    auto names = extra();
    names.push_back(row);
    store(extraKey, names);
}

void ProtectionList::remove(std::string_view name)
{
    const std::string row = lowered(name);
    if (isLocked(row))
        return;
    auto names = extra();
    std::erase_if(names, [&row](const std::string& other) { return lowered(other) == row; });
    store(extraKey, names);
    if (!holds(editableDefaults, row))
        return;
    auto off = disabled();
    off.push_back(row);
    store(disabledKey, off);
}

std::vector<std::string> ProtectionList::extra() const { return stored(extraKey); }

std::vector<std::string> ProtectionList::disabled() const { return stored(disabledKey); }

std::vector<std::string> ProtectionList::effective() const
{
    std::vector<std::string> candidates(editableDefaults.begin(), editableDefaults.end());
    for (std::string& name : loweredAll(extra()))
        candidates.push_back(std::move(name));
    const auto off = loweredAll(disabled());
    std::erase_if(candidates, [&off](const std::string& name) { return holds(off, name); });
    std::vector<std::string> rows(locked.begin(), locked.end());
    rows.insert(rows.end(), candidates.begin(), candidates.end());
    return rows;
}

std::vector<std::string> ProtectionList::displayList() const
{
    auto rows = effective();
    std::erase(rows, "ostrel");
    return rows;
}

bool ProtectionList::isLocked(std::string_view row) { return holds(locked, row); }

std::vector<std::string> ProtectionList::stored(std::string_view key) const
{
    return defaults_.textArray(key).value_or(std::vector<std::string>());
}

void ProtectionList::store(std::string_view key, const std::vector<std::string>& names)
{
    defaults_.setTextArray(key, loweredAll(names));
}

} // namespace ostrel
