// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MainQueue.h"
#include "platform/Workspace.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace platform {

/// What the desktop's several places say about movement; nothing where one doesn't say.
struct MotionWishes {
    std::optional<std::uint32_t> reducedMotion; ///< the portal: 1 asks for less
    std::optional<bool> portalAnimations; ///< the portal, in the words of a desktop without the above
    std::optional<bool> displayAnimations; ///< the X desktop's settings manager
};

/// The portal's own word decides where there is one. Without it, animations that are switched off in either
/// of the other places: a portal tells its own desktop's default also where another desktop runs.
[[nodiscard]] bool wantsReducedMotion(const MotionWishes& wishes);

/// The user's wishes as the desktop tells them: through the portal on the session bus, and through the X
/// display. With neither, the user has none. Constructing it asks nobody and needs no application object: the
/// first observer makes it ask, in a later turn of the loop, and the bus may start the portal for it.
class QtWorkspace final : public Workspace {
public:
    /// Observers are told through `queue`.
    explicit QtWorkspace(MainQueue& queue);
    QtWorkspace(const QtWorkspace&) = delete;
    QtWorkspace& operator=(const QtWorkspace&) = delete;
    ~QtWorkspace() override;

    [[nodiscard]] bool accessibilityDisplayShouldReduceMotion() const override;
    [[nodiscard]] bool accessibilityDisplayShouldDifferentiateWithoutColor() const override;
    [[nodiscard]] std::unique_ptr<Observation> observeDisplayOptions(Job changed) override;
    void open(const std::string& url) override;

private:
    class Desktop;

    void start();

    MainQueue& queue_;
    bool started_ = false;
    std::shared_ptr<Desktop> desktop_;
};

} // namespace platform
