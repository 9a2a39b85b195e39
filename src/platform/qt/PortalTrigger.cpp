// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/PortalTrigger.h"

#include <array>
#include <string_view>
#include <utility>

#include <QList>
#include <QString>

namespace platform {

namespace {

/// Names that aren't the character itself.
constexpr std::array<std::pair<std::string_view, std::string_view>, 38> signNames { {
    { "tab", "Tab" },
    { "return", "Return" },
    { "←", "Left" },
    { "→", "Right" },
    { "↑", "Up" },
    { "↓", "Down" },
    { "!", "exclam" },
    { "\"", "quotedbl" },
    { "#", "numbersign" },
    { "$", "dollar" },
    { "%", "percent" },
    { "&", "ampersand" },
    { "'", "apostrophe" },
    { "(", "parenleft" },
    { ")", "parenright" },
    { "*", "asterisk" },
    { "+", "plus" },
    { ",", "comma" },
    { "-", "minus" },
    { ".", "period" },
    { "/", "slash" },
    { ":", "colon" },
    { ";", "semicolon" },
    { "<", "less" },
    { "=", "equal" },
    { ">", "greater" },
    { "?", "question" },
    { "@", "at" },
    { "[", "bracketleft" },
    { "\\", "backslash" },
    { "]", "bracketright" },
    { "^", "asciicircum" },
    { "_", "underscore" },
    { "`", "grave" },
    { "{", "braceleft" },
    { "|", "bar" },
    { "}", "braceright" },
    { "~", "asciitilde" },
} };

std::string keyName(const std::string& character)
{
    for (const auto& [sign, name] : signNames)
        if (sign == character)
            return std::string(name);
    const QString text = QString::fromStdString(character);
    const auto points = text.toUcs4();
    // Any other sign is named by its number.
    if (points.size() == 1 && points[0] >= 0x80)
        return "U" + QString::number(points[0], 16).toUpper().rightJustified(4, '0').toStdString();
    const bool functionKey = points.size() > 1 && points[0] == 'f';
    return functionKey ? text.toUpper().toStdString() : character;
}

} // namespace

std::string portalTrigger(const HotKey& hotKey)
{
    std::string trigger;
    for (const auto& [flag, name] :
        { std::pair { ModifierFlag::control, "CTRL+" }, { ModifierFlag::option, "ALT+" },
            { ModifierFlag::shift, "SHIFT+" }, { ModifierFlag::command, "LOGO+" } })
        if (hotKey.modifierFlags & flag)
            trigger += name;
    return trigger + keyName(hotKey.character);
}

} // namespace platform
