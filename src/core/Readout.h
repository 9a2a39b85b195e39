// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

namespace ostrel {

/// The one line over the panel's body. Main thread only.
class Readout {
public:
    virtual ~Readout() = default;

    /// Shows a text of the tab's own.
    virtual void set(std::string_view text) = 0;
    /// Shows the live line from the readings and the last snapshot; nothing without a snapshot, or while the
    /// tab owns the line.
    virtual void refresh() = 0;
};

} // namespace ostrel
