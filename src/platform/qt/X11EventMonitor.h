// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/EventMonitor.h"

namespace platform {

/// Presses on other programs as an X display tells them, and keys in our own windows, both only while
/// somebody observes. Constructing it asks nobody and needs no application object.
class X11EventMonitor final : public EventMonitor {
public:
    /// Observers are told through `queue`.
    explicit X11EventMonitor(MainQueue& queue);
    X11EventMonitor(const X11EventMonitor&) = delete;
    X11EventMonitor& operator=(const X11EventMonitor&) = delete;
    ~X11EventMonitor() override;

    /// Null without an X display, without the newer input extension, and on a display inside a Wayland
    /// desktop, which doesn't tell of presses on that desktop's own programs.
    [[nodiscard]] std::unique_ptr<Observation> monitorMouseDown(Job pressed) override;
    /// With an application object.
    [[nodiscard]] std::unique_ptr<Observation> monitorKeyDown(
        std::function<bool(const KeyDown&)> take) override;

private:
    class Watch;

    MainQueue& queue_;
    std::shared_ptr<Watch> watch_; ///< from the first observer on
};

} // namespace platform
