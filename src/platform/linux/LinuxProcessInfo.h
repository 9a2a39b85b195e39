// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/ProcessInfo.h"

#include <string>
#include <string_view>

namespace platform {

/// Facts from /etc/os-release, /proc/uptime, the thermal zones, the processor's own sensors, the firmware's
/// profile and the processor's energy preference; the last two are what power profile daemons set.
class LinuxProcessInfo final : public ProcessInfo {
public:
    /// `root` stands before every path; empty for the running machine.
    explicit LinuxProcessInfo(std::string root = "");

    /// "Linux" on a machine that doesn't say.
    [[nodiscard]] std::string operatingSystemVersionString() const override;
    [[nodiscard]] double systemUptime() const override;

    /// The worst zone or sensor. A zone is critical from its hot or critical trip point up, serious from its
    /// passive one, fair within five degrees below that. A sensor is critical while it raises the alarm,
    /// serious from the temperature up at which the processor slows down, fair within five degrees below.
    [[nodiscard]] std::optional<ThermalState> thermalState() const override;
    /// On while the firmware's profile or the processor's preference saves power.
    [[nodiscard]] std::optional<bool> isLowPowerModeEnabled() const override;
    [[nodiscard]] int activeProcessorCount() const override;

private:
    std::string root_;
};

/// The pretty name in the text of an os-release file, quotes and escapes taken off; "Linux" without one.
[[nodiscard]] std::string prettyOsName(std::string_view osRelease);

} // namespace platform
