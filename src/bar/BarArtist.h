// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/StatusItem.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// What a picture of values is drawn from.
struct BarValues {
    bool mark = false; ///< whether the mark stands with them
    std::string title; ///< the whole text, where it has room
    std::vector<std::string> figures; ///< for a square: one or two rows
};

/// Who draws for the bar item and measures its text. Main thread.
class BarArtist {
public:
    using Picture = std::shared_ptr<const platform::StatusItemPicture>;

    virtual ~BarArtist() = default;

    /// How wide the item's text is, in points; 0 for none.
    [[nodiscard]] virtual double titleWidth(std::string_view title) const = 0;
    /// The instrument's mark.
    [[nodiscard]] virtual Picture markPicture() const = 0;
    /// The values: text where the place is wide enough, else the figures alone.
    [[nodiscard]] virtual Picture valuePicture(const BarValues& values) const = 0;
};

} // namespace ostrel
