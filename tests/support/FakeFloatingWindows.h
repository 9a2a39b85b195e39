// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/FloatingWindows.h"

/// Counts the windows that were prepared.
struct FakeFloatingWindows final : platform::FloatingWindows {
    void prepare(QWidget&, double) override { ++prepared; }

    int prepared = 0;
};
