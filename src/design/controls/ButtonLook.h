// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/ThemedColor.h"

#include <optional>

namespace ostrel {

/// What a button is in at the moment that it is drawn.
struct ButtonState {
    bool enabled = true;
    bool active = false; ///< the chosen one, or switched on
    bool hovering = false; ///< the pointer is over it
    bool pressed = false; ///< held down by the pointer
    bool focused = false; ///< it has the keyboard
};

/// The family's buttons, by where they stand and what they do there.
enum class ButtonKind {
    shellFramed,
    shellNavigation,
    shellQuiet,
    ostrelPlain,
    ostrelNavigation,
    hintCard,
};

/// The weight of a caption, on the scale that fonts use.
enum class CaptionWeight { regular = 400, medium = 500, semibold = 600 };

/// What a button is drawn with, in this order. A part without a colour isn't drawn. Lengths in points.
struct ButtonLook {
    static constexpr double fillInset = 0.5;
    static constexpr double barHeight = 2;
    static constexpr double barRadius = 1;
    static constexpr double barInset = 10; ///< from either side
    static constexpr double captionSize = 11;
    static constexpr double captionInset = 4; ///< from either side
    static constexpr double ringInset = 2; ///< of the ring's middle

    std::optional<ThemedColor> fill;
    std::optional<ThemedColor> outline; ///< one hairline wide
    std::optional<ThemedColor> bar; ///< along the bottom edge
    ThemedColor text;
    CaptionWeight weight = CaptionWeight::regular;
    std::optional<ThemedColor> ring;
    double radius = 8;

    [[nodiscard]] double ringRadius() const { return radius - ringInset; }
};

/// How a button of that kind is drawn in that state.
[[nodiscard]] ButtonLook buttonLook(ButtonKind kind, const ButtonState& state);

} // namespace ostrel
