// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/FakeBundle.h"
#include "support/FakeChildProcess.h"
#include "support/FakeFileManager.h"
#include "support/FakeKernel.h"
#include "support/FakeUserDefaults.h"
#include "support/ManualGlobalQueue.h"
#include "support/VirtualTime.h"

#include <string>

/// A machine without a desktop, as fakes: the ground of each bench.
struct FakeMachine {
    /// Prepares what the next child answers, after this many seconds.
    void answer(
        const std::string& output, int status = 0, const std::string& errorOutput = {}, double elapsed = 0.1)
    {
        children.outcomes.push_back({ {}, output, errorOutput, status, platform::Seconds(elapsed) });
    }

    /// Lets the work that waits in the background be done, and its answers arrive.
    void deliver()
    {
        globalQueue.run();
        time.runPosted();
    }

    FakeKernel kernel;
    FakeChildProcess children;
    FakeUserDefaults defaults;
    FakeFileManager files;
    FakeBundle bundle;
    VirtualTime time;
    ManualGlobalQueue globalQueue;
};
