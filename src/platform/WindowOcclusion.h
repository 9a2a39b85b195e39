// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Workspace.h"

#include <cstdint>
#include <memory>

namespace platform {

/// The window system's number of a window; 0 for none.
using WindowHandle = std::uintptr_t;

/// Whether a window that is on screen can be seen, or other windows hide the whole of it. Main thread.
class WindowOcclusion {
public:
    virtual ~WindowOcclusion() = default;

    /// True only when it is known that no pixel of the window shows. Asks nobody and never waits.
    [[nodiscard]] virtual bool covered(WindowHandle window) const = 0;

    /// Runs `changed` whenever `covered(window)` may have changed.
    [[nodiscard]] virtual std::unique_ptr<Observation> observe(WindowHandle window, Job changed) = 0;
};

} // namespace platform
