// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Geometry.h"
#include "platform/Image.h"
#include "platform/Menu.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace platform {

/// What a bar item shows.
struct StatusItemFace {
    bool visible = true;
    std::string label; ///< text beside the picture, on hosts that show one; may be empty
    std::string labelGuide; ///< the widest label to expect, so that a host can keep its width steady
    std::string toolTip; ///< also what assistive technology reads
    Images images;

    bool operator==(const StatusItemFace&) const = default;
};

/// The program's item in the desktop's bar. It registers with whatever host there is, and again when the host
/// comes back; without a host it waits. Main thread only.
class StatusItem {
public:
    virtual ~StatusItem() = default;

    /// Shows the face. Hosts hear only of what really changed.
    virtual void setFace(const StatusItemFace& face) = 0;

    /// Who builds the menu: asked anew each time the menu is about to open, and once before that.
    virtual void setMenuBuilder(std::function<Menu()> build) = 0;

    /// Called on a plain press, with the pointer's place when the host tells it.
    virtual void setActivateHandler(std::function<void(std::optional<Point>)> handler) = 0;

    /// Whether a host has taken the item in.
    [[nodiscard]] virtual bool isRegistered() const = 0;
};

/// The desktop's bar.
class StatusBar {
public:
    virtual ~StatusBar() = default;

    /// A new item. `id` names it for the host and stays the same across runs; `title` is its readable name.
    [[nodiscard]] virtual std::unique_ptr<StatusItem> makeItem(
        const std::string& id, const std::string& title)
        = 0;
};

} // namespace platform
