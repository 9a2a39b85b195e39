// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <string_view>

namespace ostrel {

/// The way to open and close the panel, for the bar item, the hotkey, the routes and the hints. Main thread
/// only.
class PanelDoor {
public:
    virtual ~PanelDoor() = default;

    /// Opens the panel, or brings an open one forward.
    virtual void show() = 0;
    /// Closes it; the reason is kept for diagnosis. Nothing when it is closed.
    virtual void close(std::string_view reason) = 0;
    /// Opens a closed panel and closes an open one.
    virtual void toggle() = 0;
    /// Opens it away from the bar item, near the lower right corner of the main display.
    virtual void showTestbed() = 0;

    /// Whether the panel is on screen.
    [[nodiscard]] virtual bool shown() const = 0;
    /// When it last finished closing; long ago before the first time.
    [[nodiscard]] virtual std::chrono::system_clock::time_point lastClose() const = 0;
};

} // namespace ostrel
