// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/FloatingWindows.h"

/// Counts what it was asked for.
struct FakeFloatingWindows final : platform::FloatingWindows {
    void prepare(QWidget&, double) override { ++prepared; }

    void takeKeyboard(QWidget&) override { ++taken; }

    int prepared = 0;
    int taken = 0; ///< how often the keyboard
};
