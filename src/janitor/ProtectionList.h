// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/UserDefaults.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// The names that protect at one moment. To judge many processes at once.
class ProtectionRules {
public:
    /// The rows are in lower case.
    explicit ProtectionRules(std::vector<std::string> rows)
        : rows_(std::move(rows))
    {
    }

    /// Whether a process of this short name and whole command line may never be stopped. Any bytes; linear in
    /// the length of the line.
    [[nodiscard]] bool protects(std::string_view name, std::string_view cmd) const;

private:
    std::vector<std::string> rows_;
};

/// The one answer to the question whether a process may be stopped. A row protects the process of that name,
/// and each whose command line holds it as a whole word or at the end of a path. The user's part is kept in
/// the settings and read afresh by each call. Main thread.
class ProtectionList {
public:
    static constexpr std::string_view extraKey = "ostrel.protectedExtra";
    static constexpr std::string_view disabledKey = "ostrel.protectedDisabled";

    /// The agents and the program itself. No setting lifts these.
    static constexpr std::array<std::string_view, 4> locked { "claude", "codex", "ostrel", "ostrel app" };
    /// Protected from the start; the user may switch each off.
    static constexpr std::array<std::string_view, 6> editableDefaults { "orca", "finder", "launchd",
        "loginwindow", "windowserver", "kernel_task" };
    /// Nothing whose executable lies below these is stopped. Case counts.
    static constexpr std::array<std::string_view, 3> pathPrefixes { "/System/", "/usr/libexec/",
        "/usr/sbin/" };

    /// `defaults` must outlive this.
    explicit ProtectionList(platform::UserDefaults& defaults)
        : defaults_(defaults)
    {
    }

    /// Whether a process of this short name and whole command line may never be stopped.
    [[nodiscard]] bool isProtected(std::string_view name, std::string_view cmd) const;
    /// The same for many processes: the rules as they stand now.
    [[nodiscard]] ProtectionRules rules() const;

    /// Adds a name, or switches a default on again. Nothing for blanks and for what is protected already.
    void add(std::string_view name);
    /// Removes a name of the user's, or switches a default off. Nothing for a locked one.
    void remove(std::string_view name);

    /// Names that the user added, as they are stored.
    [[nodiscard]] std::vector<std::string> extra() const;
    /// Defaults that the user switched off, as they are stored.
    [[nodiscard]] std::vector<std::string> disabled() const;
    /// All rows that protect, in lower case.
    [[nodiscard]] std::vector<std::string> effective() const;
    /// The same as settings show it: this program once.
    [[nodiscard]] std::vector<std::string> displayList() const;
    /// Whether no setting lifts that row.
    [[nodiscard]] static bool isLocked(std::string_view row);

private:
    [[nodiscard]] std::vector<std::string> stored(std::string_view key) const;
    void store(std::string_view key, const std::vector<std::string>& names);

    platform::UserDefaults& defaults_;
};

} // namespace ostrel
