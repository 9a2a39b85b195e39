// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/OstrelMode.h"

namespace ostrel {

/// The panel's body, for those whose state it draws. Main thread only.
class PanelBody {
public:
    virtual ~PanelBody() = default;

    /// The present tab, also while the panel is closed.
    [[nodiscard]] virtual OstrelMode mode() const = 0;
    /// Whether the panel is on screen.
    [[nodiscard]] virtual bool shown() const = 0;
    /// Draws the present tab anew from state.
    virtual void renderBody() = 0;
    /// The same, but unless forced at most once in two seconds.
    virtual void renderBodyThrottled(bool force) = 0;
    /// Changes the tab.
    virtual void switchMode(OstrelMode mode) = 0;
};

} // namespace ostrel
