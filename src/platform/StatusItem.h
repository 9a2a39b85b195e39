// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Geometry.h"
#include "platform/Image.h"
#include "platform/Menu.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace platform {

/// What an item draws, at whatever size its host has room for. Sizes in pixels.
class StatusItemPicture {
public:
    virtual ~StatusItemPicture() = default;

    /// Exactly that large, on nothing, in one ink (0xRRGGBB). Where the width allows no more than a square,
    /// it shows what can be read there.
    [[nodiscard]] virtual Image draw(int width, int height, std::uint32_t ink) const = 0;
    /// Pictures of the same key look the same.
    [[nodiscard]] virtual std::string key() const = 0;
};

/// What a bar item shows. Hosts differ: some write a label beside the picture, the others show the picture
/// alone, so each of the two kinds has one of its own.
struct StatusItemFace {
    bool visible = true;
    double length = 0; ///< width that picture and text want, in points
    std::string label; ///< text beside the picture; may be empty
    std::string labelGuide; ///< the widest label to expect, so that a host can keep its width steady
    std::string toolTip; ///< also what assistive technology reads
    std::string accessibilityHelp; ///< read after it: what a press does
    std::string iconName; ///< names `icon` in the icon theme; empty where it has no name or isn't shown
    std::shared_ptr<const StatusItemPicture> icon; ///< for hosts that show the label; null for none
    std::shared_ptr<const StatusItemPicture> picture; ///< for all other hosts: everything in one picture
};

/// A press on the item.
struct StatusItemPress {
    std::optional<Point> place; ///< the pointer's, when the host tells it
    bool secondary = false; ///< the right button
    bool control = false; ///< the control key was held
};

/// Where the item is on screen, as far as anybody can know.
struct StatusItemPlacement {
    Rect frame; ///< in global coordinates; a good guess where the host doesn't tell
    bool seen = false; ///< a host says that it shows the item, or its window can be seen
};

/// The program's item in the desktop's bar. It registers with whatever host there is, and again when the host
/// comes back; without a host it waits. Main thread only.
class StatusItem {
public:
    virtual ~StatusItem() = default;

    /// Shows the face. Hosts hear only of what really changed. An invisible one leaves the bar.
    virtual void setFace(const StatusItemFace& face) = 0;

    /// Who builds the menu: asked anew each time the menu is about to open, and once before that.
    virtual void setMenuBuilder(std::function<Menu()> build) = 0;

    /// Called after each press in a turn of its own. Hosts that open the menu by themselves don't tell.
    virtual void setPressHandler(std::function<void(const StatusItemPress&)> handler) = 0;

    /// Opens the menu beside the item, or at the place of the press that asked for it.
    virtual void popUpMenu() = 0;

    /// Nothing while no host has the item.
    [[nodiscard]] virtual std::optional<StatusItemPlacement> placement() const = 0;
};

/// The desktop's bar.
class StatusBar {
public:
    virtual ~StatusBar() = default;

    /// A new item. `id` names it for the host and stays the same across runs; `title` is its readable name;
    /// `iconFolder` holds the icon theme that has the face's icon name, and an empty icon "{id}-blank" for
    /// hosts that always show one; empty for none.
    [[nodiscard]] virtual std::unique_ptr<StatusItem> makeItem(
        const std::string& id, const std::string& title, const std::string& iconFolder)
        = 0;
};

} // namespace platform
