// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/StatusItem.h"

#include "support/CallLog.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// A bar that keeps what its last item was given.
class FakeStatusBar final : public platform::StatusBar, public Logged {
    using Press = std::function<void(const platform::StatusItemPress&)>;

public:
    [[nodiscard]] std::unique_ptr<platform::StatusItem> makeItem(
        const std::string& id, const std::string& title, const std::string& iconFolder) override
    {
        note("makes the item");
        ids.push_back(id + " " + title);
        folder = iconFolder;
        ++items;
        auto item = std::make_unique<Item>();
        item->bar = this;
        return item;
    }

    std::vector<std::string> ids; ///< of all items ever made, with their titles
    std::string folder; ///< the last item's icon folder
    int items = 0; ///< on the bar now
    std::vector<platform::StatusItemFace> faces;
    std::function<platform::Menu()> menu;
    Press press;
    std::optional<platform::StatusItemPlacement> placement;
    int menusOpened = 0;
    platform::Job onRemove = [] {}; ///< called when an item goes

private:
    struct Item final : platform::StatusItem {
        ~Item() override
        {
            bar->note("takes the item off");
            --bar->items;
            bar->onRemove();
        }
        void setFace(const platform::StatusItemFace& face) override
        {
            bar->note("draws the item");
            bar->faces.push_back(face);
        }
        void setMenuBuilder(std::function<platform::Menu()> build) override { bar->menu = std::move(build); }
        void setPressHandler(Press handler) override { bar->press = std::move(handler); }
        void popUpMenu() override { ++bar->menusOpened; }
        [[nodiscard]] std::optional<platform::StatusItemPlacement> placement() const override
        {
            return bar->placement;
        }

        FakeStatusBar* bar = nullptr;
    };
};
