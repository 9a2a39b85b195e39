// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/MotionServices.h"

#include "support/FakeOcclusion.h"
#include "support/FakeWorkspace.h"
#include "support/VirtualTime.h"

/// What a view of the design room lives on, with time in the test's hands.
struct DesignBench {
    VirtualTime time;
    FakeWorkspace workspace;
    FakeOcclusion occlusion;
    ostrel::MotionServices services { time, time, workspace, occlusion };
};
