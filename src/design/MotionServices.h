// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MainQueue.h"
#include "platform/Timer.h"
#include "platform/WindowOcclusion.h"
#include "platform/Workspace.h"

namespace ostrel {

/// What a moving view asks of the system. The parts outlive every view. Main thread.
struct MotionServices {
    platform::RunLoop& runLoop;
    platform::MainQueue& mainQueue;
    platform::Workspace& workspace;
    platform::WindowOcclusion& occlusion;
    /// Nothing moves by itself while the program checks itself.
    bool selfTest = false;

    [[nodiscard]] bool reduceMotion() const { return workspace.accessibilityDisplayShouldReduceMotion(); }
};

} // namespace ostrel
