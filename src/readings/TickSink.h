// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Clock.h"

#include <cstdint>

namespace ostrel {

/// What the tick knows of one minute, in whole percentages.
struct MinuteReading {
    std::int64_t cpu = 0;
    std::int64_t swap = 0;
    std::int64_t ram = 0;
    double load = 0;
    platform::Instant at;

    bool operator==(const MinuteReading&) const = default;
};

/// Those who live by the tick, called in this order. Main thread; none of them may wait for anything.
class TickSink {
public:
    virtual ~TickSink() = default;

    /// Keeps the reading in the minute history.
    virtual void recordMinute(const MinuteReading& reading) = 0;
    /// Redraws the bar item.
    virtual void updateStatusButton() = 0;
    /// Lets the hint policy decide whether to speak.
    virtual void considerCompanion() = 0;
    /// Whether the panel is on screen.
    [[nodiscard]] virtual bool panelShown() const = 0;
    /// Writes the live values and the readout of the open panel. Not called while it is closed.
    virtual void refreshPanel() = 0;
};

/// Told when the user chose another refresh profile.
class RefreshListener {
public:
    virtual ~RefreshListener() = default;

    /// The intervals have changed, and the native tick has been restarted.
    virtual void profileChanged() = 0;
};

} // namespace ostrel
