// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MainQueue.h"
#include "platform/WindowOcclusion.h"

namespace platform {

/// Windows that others hide, as the X display tells it of those that are observed; no window is covered
/// without one. Constructing it asks nobody and needs no application object.
class X11WindowOcclusion final : public WindowOcclusion {
public:
    /// Observers are told through `queue`.
    explicit X11WindowOcclusion(MainQueue& queue);
    X11WindowOcclusion(const X11WindowOcclusion&) = delete;
    X11WindowOcclusion& operator=(const X11WindowOcclusion&) = delete;
    ~X11WindowOcclusion() override;

    /// Known only while somebody observes the window.
    [[nodiscard]] bool covered(WindowHandle window) const override;

    /// Begin before the window is shown: the display tells changes alone.
    [[nodiscard]] std::unique_ptr<Observation> observe(WindowHandle window, Job changed) override;

private:
    class Watch;

    std::shared_ptr<Watch> watch_;
};

} // namespace platform
