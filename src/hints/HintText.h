// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <string>

namespace ostrel {

/// One of the two answers to a hint.
struct HintButton {
    std::string caption;
    std::string toolTip; ///< empty for none
    int width = 0; ///< in points; 0 for as wide as its caption asks
};

/// What a hint says.
struct HintText {
    std::string title;
    std::string fact;
    std::array<HintButton, 2> buttons; ///< inspect first
    std::string mark; ///< the figure's tooltip; empty for none
};

/// The words of the legacy card and of the shared one: of a real hint at that level, or of a sample.
[[nodiscard]] HintText legacyHintText(bool preview, int level);
[[nodiscard]] HintText sharedHintText(bool preview, int level);

} // namespace ostrel
