// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

namespace platform {

/// How hot the machine runs.
enum class ThermalState { nominal = 0, fair = 1, serious = 2, critical = 3 };

/// Slow-changing facts about the machine and its operating system. Main thread only; none of them fails.
class ProcessInfo {
public:
    virtual ~ProcessInfo() = default;

    /// The operating system's own name with its version, for instance "Debian GNU/Linux 12 (bookworm)".
    [[nodiscard]] virtual std::string operatingSystemVersionString() const = 0;

    /// Seconds since the machine started; 0 when unknown.
    [[nodiscard]] virtual double systemUptime() const = 0;

    /// Nothing on a machine without a thermal sensor.
    [[nodiscard]] virtual std::optional<ThermalState> thermalState() const = 0;

    /// Nothing on a machine that knows no power modes.
    [[nodiscard]] virtual std::optional<bool> isLowPowerModeEnabled() const = 0;

    /// Processors that this process may run on, at least 1.
    [[nodiscard]] virtual int activeProcessorCount() const = 0;
};

} // namespace platform
