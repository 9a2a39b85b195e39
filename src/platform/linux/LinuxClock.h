// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Clock.h"

namespace platform {

/// The machine's wall clock.
class LinuxClock final : public Clock {
public:
    [[nodiscard]] Instant now() const override { return std::chrono::system_clock::now(); }
};

} // namespace platform
