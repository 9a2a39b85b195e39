// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Timer.h"

namespace platform {

/// Timers on the toolkit's event loop. The loop may move each firing by up to a twentieth of the period, so
/// that the machine wakes once for several of them.
class QtRunLoop final : public RunLoop {
public:
    [[nodiscard]] std::unique_ptr<Timer> scheduleRepeating(Seconds period, Job job) override;
};

} // namespace platform
