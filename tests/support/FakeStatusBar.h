// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/StatusItem.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// A bar that keeps what its last item was given.
class FakeStatusBar final : public platform::StatusBar {
public:
    [[nodiscard]] std::unique_ptr<platform::StatusItem> makeItem(
        const std::string& id, const std::string& title) override
    {
        ids.push_back(id + " " + title);
        ++items;
        return std::make_unique<Item>(*this);
    }

    std::vector<std::string> ids; ///< of all items ever made, with their titles
    int items = 0; ///< on the bar now
    std::vector<platform::StatusItemFace> faces;
    std::function<platform::Menu()> menu;
    std::function<void(std::optional<platform::Point>)> activate;
    platform::Job onFace; ///< called after each face
    platform::Job onRemove; ///< called when an item goes

private:
    class Item final : public platform::StatusItem {
    public:
        explicit Item(FakeStatusBar& bar)
            : bar_(bar)
        {
        }
        ~Item() override
        {
            --bar_.items;
            if (bar_.onRemove)
                bar_.onRemove();
        }
        void setFace(const platform::StatusItemFace& face) override
        {
            bar_.faces.push_back(face);
            if (bar_.onFace)
                bar_.onFace();
        }
        void setMenuBuilder(std::function<platform::Menu()> build) override { bar_.menu = std::move(build); }
        void setActivateHandler(std::function<void(std::optional<platform::Point>)> handler) override
        {
            bar_.activate = std::move(handler);
        }
        [[nodiscard]] bool isRegistered() const override { return true; }

    private:
        FakeStatusBar& bar_;
    };
};
