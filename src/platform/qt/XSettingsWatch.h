// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>

#include <xcb/xcb.h>

namespace platform {

/// What an X desktop's settings manager says about animations, and its changes, from the events of one
/// connection. Main thread.
class XSettingsWatch {
public:
    /// Asks the display in a few round trips.
    explicit XSettingsWatch(xcb_connection_t* connection);

    /// Nothing when no manager runs, or it doesn't say.
    [[nodiscard]] std::optional<bool> animations() const { return animations_; }

    /// Takes an event in: another manager, or another setting. True when it was about that.
    bool handle(const xcb_generic_event_t& event);

private:
    void findManager();
    void read();

    xcb_connection_t* connection_;
    xcb_atom_t selection_ = XCB_ATOM_NONE;
    xcb_atom_t settings_ = XCB_ATOM_NONE;
    xcb_atom_t announcement_ = XCB_ATOM_NONE;
    xcb_window_t manager_ = XCB_NONE;
    std::optional<bool> animations_;
};

} // namespace platform
