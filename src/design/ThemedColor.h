// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/Color.h"
#include "design/ZOLThemePolicy.h"

#include <string>
#include <string_view>

namespace ostrel {

/// A colour that follows the theme: it is resolved where it is drawn, in the appearance of what it is drawn
/// on.
struct ThemedColor {
    enum class Layer { semantic, component };

    Layer layer = Layer::semantic;
    std::string_view token; ///< the row that it stands for
    Color light;
    Color dark;

    constexpr bool operator==(const ThemedColor&) const = default;

    [[nodiscard]] constexpr Color in(ZOLThemePolicy::Mode mode) const
    {
        return mode == ZOLThemePolicy::Mode::dark ? dark : light;
    }

    /// The name under which people find it: "zol.text", "zol.component.hint-text".
    [[nodiscard]] std::string name() const
    {
        return std::string(layer == Layer::component ? "zol.component." : "zol.").append(token);
    }
};

} // namespace ostrel
