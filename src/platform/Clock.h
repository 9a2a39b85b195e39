// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>

namespace platform {

/// A point in wall-clock time. The rolling record, the minute history and the snapshot's age all follow the
/// wall clock, so a machine that slept shows its gap.
using Instant = std::chrono::system_clock::time_point;

/// Seconds, with fractions.
using Seconds = std::chrono::duration<double>;

/// Long ago: earlier than any instant that a clock gives.
inline constexpr Instant distantPast = Instant::min();

/// The wall clock, as something that a test can replace.
class Clock {
public:
    virtual ~Clock() = default;

    /// The present instant. Any thread.
    [[nodiscard]] virtual Instant now() const = 0;
};

} // namespace platform
