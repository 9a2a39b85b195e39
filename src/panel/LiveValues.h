// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/LiveViews.h"
#include "core/PanelBody.h"
#include "panel/PanelState.h"

#include <functional>
#include <map>
#include <string>

namespace ostrel {

/// Writes the native values into what the open panel shows, without rebuilding it. Main thread.
class LiveValues {
public:
    /// `title` is the bar item's present text, which the settings tab previews.
    LiveValues(PanelState state, LiveViews& views, const PanelBody& body, std::function<std::string()> title);

    /// Writes every registered label, gauge and graph; nothing before the first reading.
    void refreshLiveValues();

    /// Moves the gauges alone, from the value that each showed last: a body that was built anew goes on from
    /// there.
    void refreshGauges();

    /// The last value shown per gauge, under "cpu", "memory" and "swap": where its next animation begins.
    [[nodiscard]] const std::map<std::string, double, std::less<>>& gaugeLast() const { return gaugeLast_; }

private:
    void refreshLabels(const NativeStats& native);
    void refreshGraphs();

    PanelState state_;
    LiveViews& views_;
    const PanelBody& body_;
    std::function<std::string()> title_;
    std::map<std::string, double, std::less<>> gaugeLast_;
};

} // namespace ostrel
