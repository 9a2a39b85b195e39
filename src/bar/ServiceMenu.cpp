// SPDX-License-Identifier: Apache-2.0
#include "bar/ServiceMenu.h"

#include "design/ZOLThemePolicy.h"

#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace ostrel {

namespace {

using platform::Menu;
using platform::MenuItem;

MenuItem line() { return { .title = {}, .toolTip = {}, .checked = {}, .separator = true }; }

MenuItem row(std::string title, platform::Job action = {})
{
    return { .title = std::move(title), .toolTip = {}, .checked = {}, .action = std::move(action) };
}

MenuItem folder(std::string title, Menu rows)
{
    return { .title = std::move(title), .toolTip = {}, .checked = {}, .submenu = std::move(rows) };
}

} // namespace

ServiceMenu::ServiceMenu(Owner owner)
    : owner_(std::move(owner))
{
}

template <typename Call>
MenuItem ServiceMenu::check(std::string title, bool on, Call call) const
{
    MenuItem item = row(std::move(title), life_.guard(std::move(call)));
    item.checked = on;
    return item;
}

Menu ServiceMenu::rebuildMenu() const
{
    return { row(barMenuHeadline(owner_.bar.reading())), line(),
        row("show panel", life_.guard([this] { owner_.panel.show(); })), folder("actions", actions()),
        folder("settings", settings()), line(), row("about ostrel", owner_.showAbout),
        row("quit", owner_.quit) };
}

Menu ServiceMenu::actions() const
{
    return { row("audit MCP (read-only)", owner_.runClean), row("preview own history", owner_.trimLogs),
        line(), row("compact own history…", owner_.deepClean) };
}

Menu ServiceMenu::settings() const
{
    Menu rows;
    appendLooks(rows);
    rows.push_back(line());
    appendBar(rows);
    rows.push_back(line());
    rows.push_back(row(fmt::format("hotkey: {} · toggle panel", owner_.settings.hotkeyLabel())));
    for (const char* title : { "esc · close panel", "1–9 · switch tabs", "/ · key help overlay" })
        rows.push_back(row(title));
    return rows;
}

void ServiceMenu::appendLooks(Menu& rows) const
{
    const bool pinned = owner_.choices.pinned();
    rows.push_back(check(pinned ? "unpin panel" : "pin panel open", pinned,
        [this] { owner_.choices.setPinned(!owner_.choices.pinned()); }));
    rows.push_back(check(
        "theme: black", owner_.choices.dark(), [this] { owner_.choices.setTheme(!owner_.choices.dark()); }));
    rows.back().toolTip = ZOLThemePolicy::tooltip;
    rows.push_back(line());
    const std::string stored = owner_.settings.refreshProfile();
    for (const std::string_view profile : { "fast", "normal", "calm" })
        rows.push_back(check(fmt::format("refresh: {}", profile), profile == stored,
            [this, profile] { owner_.tick.setRefresh(profile); }));
}

void ServiceMenu::appendBar(Menu& rows) const
{
    rows.push_back(row("menu bar"));
    rows.push_back(row("preview: " + owner_.bar.title()));
    for (const BarPart part : allBarParts)
        rows.push_back(
            check(fmt::format("show {}", rawValue(part)), owner_.settings.barParts.contains(rawValue(part)),
                [this, part] { owner_.bar.toggleBarPart(part); }));
    rows.push_back(line());
    rows.push_back(row("modes:"));
    for (const BarDisplayMode mode : allBarDisplayModes)
        if (mode != BarDisplayMode::hidden)
            rows.push_back(check(fmt::format("mode: {}", rawValue(mode)),
                mode == owner_.settings.barDisplayMode, [this, mode] { owner_.bar.setBarMode(mode); }));
    rows.push_back(row("hidden · in the panel settings, it asks first"));
}

} // namespace ostrel
