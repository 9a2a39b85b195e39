// SPDX-License-Identifier: Apache-2.0
#include "design/controls/ButtonLook.h"

#include "design/OstrelStyle.h"
#include "design/ZOLAppShellStyle.h"

namespace ostrel {

namespace {

/// What tells the kinds apart.
struct Palette {
    ThemedColor ground; ///< of a button at rest
    ThemedColor ink;
    ThemedColor disabledText;
    ThemedColor outline;
    bool navigation = false; ///< flat until it is pointed at or chosen, with a bar when chosen
    bool outlined = false;
};

constexpr Palette palette(ButtonKind kind)
{
    namespace Shell = ZOLAppShellStyle;
    Palette shell { Shell::surface, Shell::ink, Shell::disabled, Shell::divider };
    Palette own { OstrelStyle::bg, OstrelStyle::ink, OstrelStyle::muted, OstrelStyle::hair };
    switch (kind) {
    case ButtonKind::shellFramed:
        shell.outlined = true;
        return shell;
    case ButtonKind::shellNavigation:
        shell.navigation = true;
        return shell;
    case ButtonKind::shellQuiet:
        return shell;
    case ButtonKind::ostrelPlain:
        own.outlined = true;
        return own;
    case ButtonKind::ostrelNavigation:
        own.navigation = true;
        return own;
    case ButtonKind::hintCard:
        break;
    }
    return { Shell::componentRole("hint-background"), Shell::componentRole("hint-text"), Shell::muted,
        Shell::componentRole("hint-border"), false, true };
}

} // namespace

ButtonLook buttonLook(ButtonKind kind, const ButtonState& state)
{
    const Palette colors = palette(kind);
    // The card's buttons do something once and have nothing to be chosen for.
    const bool active = state.active && kind != ButtonKind::hintCard;
    const bool pointedAt = state.hovering || state.pressed;

    ButtonLook look;
    look.radius = ZOLAppShellStyle::controlRadius();
    if (kind == ButtonKind::ostrelPlain || kind == ButtonKind::ostrelNavigation)
        look.radius = OstrelStyle::radius;
    if (state.pressed)
        look.fill = ZOLAppShellStyle::divider;
    else if (pointedAt || active)
        look.fill = ZOLAppShellStyle::hover;
    else if (!colors.navigation)
        look.fill = colors.ground;
    if (colors.outlined)
        look.outline = colors.outline;
    if (colors.navigation && active)
        look.bar = ZOLAppShellStyle::signal;
    if (!state.enabled)
        look.text = colors.disabledText;
    else
        look.text = pointedAt || active ? colors.ink : ZOLAppShellStyle::muted;
    if (kind == ButtonKind::hintCard)
        look.weight = CaptionWeight::medium;
    else if (active)
        look.weight = CaptionWeight::semibold;
    if (state.focused)
        look.ring = colors.ink;
    return look;
}

} // namespace ostrel
