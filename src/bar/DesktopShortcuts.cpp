// SPDX-License-Identifier: Apache-2.0
#include "bar/DesktopShortcuts.h"

#include "core/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <utility>

#include <fmt/format.h>

namespace ostrel::DesktopShortcuts {

namespace {

constexpr std::size_t longestFile = std::size_t { 256 } * 1024;
/// Of what the user is told.
constexpr std::size_t longestAction = 48;

using Modifier = std::pair<std::string_view, std::uint64_t>;

constexpr std::array<Modifier, 13> modifierNames { {
    { "primary", OstrelHotkey::control },
    { "control", OstrelHotkey::control },
    { "ctrl", OstrelHotkey::control },
    { "c", OstrelHotkey::control },
    { "alt", OstrelHotkey::option },
    { "a", OstrelHotkey::option },
    { "shift", OstrelHotkey::shift },
    { "s", OstrelHotkey::shift },
    { "super", OstrelHotkey::command },
    { "meta", OstrelHotkey::command },
    { "w", OstrelHotkey::command },
    { "super_l", OstrelHotkey::command },
    { "logo", OstrelHotkey::command },
} };

constexpr std::array<std::pair<std::string_view, std::string_view>, 4> arrows { {
    { "left", "←" },
    { "right", "→" },
    { "up", "↑" },
    { "down", "↓" },
} };

std::optional<std::uint64_t> modifierOf(std::string_view word)
{
    const std::string name = lowered(word);
    for (const auto& [known, flag] : modifierNames)
        if (known == name)
            return flag;
    return std::nullopt;
}

std::string keyName(std::string_view word)
{
    std::string name = lowered(word);
    for (const auto& [known, arrow] : arrows)
        if (known == name)
            return std::string(arrow);
    return name;
}

std::vector<std::string_view> pieces(std::string_view text, char separator)
{
    std::vector<std::string_view> all;
    for (std::size_t end = 0; end != std::string_view::npos;) {
        end = text.find(separator);
        all.push_back(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return all;
}

/// "Ctrl+Alt+m", with any separator; nothing when a word in front names no modifier.
std::optional<DesktopShortcut> chord(std::string_view text, char separator)
{
    DesktopShortcut shortcut;
    const auto words = pieces(text, separator);
    for (std::size_t at = 0; at + 1 < words.size(); ++at) {
        const auto flag = modifierOf(words[at]);
        if (!flag)
            return std::nullopt;
        shortcut.modifiers |= *flag;
    }
    shortcut.key = keyName(words.back());
    if (shortcut.key.empty())
        return std::nullopt;
    return shortcut;
}

/// "<Primary><Alt>m"
std::optional<DesktopShortcut> bracketed(std::string_view text)
{
    std::string plain;
    for (const char c : text)
        if (c == '>')
            plain += '+';
        else if (c != '<')
            plain += c;
    return chord(plain, '+');
}

/// The five entities that every XML file may hold.
std::string unescaped(std::string_view text)
{
    constexpr std::array<std::pair<std::string_view, char>, 5> entities { { { "&lt;", '<' }, { "&gt;", '>' },
        { "&quot;", '"' }, { "&apos;", '\'' }, { "&amp;", '&' } } };
    std::string plain;
    while (!text.empty()) {
        const auto found = std::ranges::find_if(
            entities, [&text](const auto& entity) { return text.starts_with(entity.first); });
        plain += found == entities.end() ? text.front() : found->second;
        text.remove_prefix(found == entities.end() ? 1 : found->first.size());
    }
    return plain;
}

/// An attribute of a tag, with its entities resolved; empty without one.
std::string attribute(std::string_view tag, std::string_view name)
{
    for (const char quote : { '"', '\'' }) {
        const std::string start = fmt::format(" {}={}", name, quote);
        const auto begin = tag.find(start);
        if (begin == std::string_view::npos)
            continue;
        const auto value = tag.substr(begin + start.size());
        return unescaped(value.substr(0, value.find(quote)));
    }
    return {};
}

/// What stands between the next brackets, which may run over lines; the text goes on behind it. Nothing at
/// the end. Comments are passed over.
std::optional<std::string> nextTag(std::string_view& text)
{
    constexpr std::string_view comment = "<!--", commentEnd = "-->";
    while (true) {
        const auto begin = text.find('<');
        if (begin == std::string_view::npos)
            return std::nullopt;
        text.remove_prefix(begin);
        const bool skip = text.starts_with(comment);
        const std::string_view endMark = skip ? commentEnd : std::string_view(">");
        const auto end = text.find(endMark);
        if (end == std::string_view::npos)
            return std::nullopt;
        std::string tag(text.substr(1, end - 1));
        text.remove_prefix(end + endMark.size());
        if (skip)
            continue;
        std::ranges::replace_if(
            tag, [](char c) { return c == '\n' || c == '\t' || c == '\r'; }, ' ');
        return tag;
    }
}

/// "%2B" and the like as the bytes that they stand for.
std::string percentDecoded(std::string_view text)
{
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        unsigned char byte = 0;
        const char* const digits = text.data() + at + 1;
        if (text[at] == '%' && at + 2 < text.size()
            && std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
            plain += static_cast<char>(byte);
            at += 2;
        } else {
            plain += text[at];
        }
    }
    return plain;
}

/// The fields of Plasma's lists, in which a backslash takes a comma's meaning away.
std::vector<std::string> fields(std::string_view text)
{
    std::vector<std::string> all(1);
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\\' && at + 1 < text.size()) {
            ++at;
            all.back() += text[at] == 't' ? '\t' : text[at];
        } else if (text[at] == ',') {
            all.emplace_back();
        } else {
            all.back() += text[at];
        }
    }
    return all;
}

using Parser = std::vector<DesktopShortcut> (*)(std::string_view);

/// Where a desktop keeps its shortcuts: the user's own file, and the one that all users begin with.
struct Source {
    std::string_view desktop; ///< or the window manager, in lower case
    std::string_view title;
    std::array<std::string_view, 2> paths; ///< the first below the home directory
    Parser parse;
};

constexpr std::string_view xfceFile = "/xfce4/xfconf/xfce-perchannel-xml/xfce4-keyboard-shortcuts.xml";

const std::array<Source, 5>& sources()
{
    static const std::string xfceHome = "/.config" + std::string(xfceFile);
    static const std::string xfceSystem = "/etc/xdg" + std::string(xfceFile);
    static const std::array<Source, 5> all { {
        // A window manager before the desktop, whose own one doesn't run then.
        { "lxqt", "Openbox", { "/.config/openbox/lxqt-rc.xml", "" }, openbox },
        { "openbox", "Openbox", { "/.config/openbox/rc.xml", "/etc/xdg/openbox/rc.xml" }, openbox },
        { "xfce", "Xfce", { xfceHome, xfceSystem }, xfce },
        { "kde", "Plasma", { "/.config/kglobalshortcutsrc", "" }, plasma },
        { "lxqt", "LXQt",
            { "/.config/lxqt/globalkeyshortcuts.conf", "/etc/xdg/lxqt/globalkeyshortcuts.conf" }, lxqt },
    } };
    return all;
}

bool runs(std::string_view desktop, std::string_view name)
{
    const std::string running = lowered(desktop);
    const auto names = pieces(running, ':');
    return std::ranges::find(names, name) != names.end();
}

std::optional<std::string> actionIn(const platform::FileManager& files, const std::string& path,
    const Source& source, const OstrelHotkey& hotkey)
{
    const auto text = files.read(path, longestFile);
    if (!text)
        return std::nullopt;
    const std::string key = lowered(hotkey.character);
    for (const DesktopShortcut& shortcut : source.parse(*text))
        if (shortcut.modifiers == (hotkey.modifiers & OstrelHotkey::allModifiers) && shortcut.key == key)
            return shortcut.action;
    return std::nullopt;
}

} // namespace

std::vector<DesktopShortcut> xfce(std::string_view text)
{
    std::vector<DesktopShortcut> all;
    while (const auto tag = nextTag(text)) {
        const std::string action = attribute(*tag, "value");
        auto shortcut = tag->starts_with("property ") && attribute(*tag, "type") == "string"
            ? bracketed(attribute(*tag, "name"))
            : std::nullopt;
        if (!shortcut || action.empty())
            continue;
        shortcut->action = action;
        all.push_back(std::move(*shortcut));
    }
    return all;
}

std::vector<DesktopShortcut> openbox(std::string_view text)
{
    std::vector<DesktopShortcut> all;
    std::vector<DesktopShortcut> open;
    while (const auto tag = nextTag(text)) {
        if (tag->starts_with("keybind ")) {
            // One binding may have several keys. Within a sequence, the first key has the first action.
            const std::string keys = attribute(*tag, "key");
            for (const std::string_view key : pieces(keys, ' '))
                if (auto shortcut = chord(key, '-'))
                    open.push_back(std::move(*shortcut));
        } else if (tag->starts_with("action ")) {
            for (DesktopShortcut& shortcut : open) {
                shortcut.action = attribute(*tag, "name");
                all.push_back(std::move(shortcut));
            }
            open.clear();
        }
    }
    return all;
}

std::vector<DesktopShortcut> plasma(std::string_view text)
{
    std::vector<DesktopShortcut> all;
    for (const std::string_view line : pieces(text, '\n')) {
        const auto equals = line.find('=');
        if (line.starts_with('[') || line.starts_with("_k_") || equals == std::string_view::npos)
            continue;
        // The present keys, those that it came with, and what the user reads.
        const auto parts = fields(trimmed(line.substr(equals + 1)));
        for (const std::string_view keys : pieces(parts[0], '\t')) {
            auto shortcut = keys == "none" ? std::nullopt : chord(keys, '+');
            if (!shortcut)
                continue;
            shortcut->action = parts.size() > 2 ? parts[2] : std::string(line.substr(0, equals));
            all.push_back(std::move(*shortcut));
        }
    }
    return all;
}

std::vector<DesktopShortcut> lxqt(std::string_view text)
{
    std::vector<DesktopShortcut> all;
    bool inside = false; // the last one's group
    for (const std::string_view raw : pieces(text, '\n')) {
        const std::string_view line = trimmed(raw);
        const std::string_view value = line.substr(line.find('=') + 1);
        if (line.starts_with('[')) {
            // "Control%2BAlt%2BT.41": behind the last dot stands a number.
            const std::string name = percentDecoded(line.substr(1, line.find(']') - 1));
            auto shortcut = chord(std::string_view(name).substr(0, name.rfind('.')), '+');
            inside = shortcut.has_value();
            if (shortcut)
                all.push_back(std::move(*shortcut));
        } else if (inside && line == "Enabled=false") {
            all.pop_back();
            inside = false;
        } else if (inside
            && (line.starts_with("Comment=") || (line.starts_with("Exec=") && all.back().action.empty()))) {
            all.back().action = value;
        }
    }
    std::erase_if(all, [](const DesktopShortcut& shortcut) { return shortcut.action.empty(); });
    return all;
}

std::optional<std::string> holder(
    const platform::FileManager& files, std::string_view desktop, const OstrelHotkey& hotkey)
{
    for (const Source& source : sources()) {
        if (!runs(desktop, source.desktop))
            continue;
        for (std::size_t at = 0; at < source.paths.size(); ++at) {
            if (source.paths[at].empty())
                continue;
            const std::string path = (at == 0 ? files.homeDirectory() : "") + std::string(source.paths[at]);
            if (const auto action = actionIn(files, path, source, hotkey))
                return action->empty()
                    ? std::string(source.title)
                    : fmt::format("{} · {}", source.title, firstSigns(*action, longestAction));
        }
    }
    return std::nullopt;
}

} // namespace ostrel::DesktopShortcuts
