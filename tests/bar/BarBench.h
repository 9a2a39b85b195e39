// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bar/BarItem.h"
#include "bar/ServiceMenu.h"
#include "core/PanelChoices.h"

#include "support/FakePanel.h"
#include "support/FakeScreens.h"
#include "support/FakeStatusBar.h"
#include "support/StateBench.h"

#include <string>
#include <vector>

/// A panel's door and looks that keep, in order, what they were asked for.
struct FakeDoor : ostrel::PanelDoor, ostrel::PanelChoices {
    void show() override { calls.emplace_back("show"); }
    void close(std::string_view reason) override { calls.emplace_back(reason); }
    void toggle() override { calls.emplace_back("toggle"); }
    void showTestbed() override { calls.emplace_back("testbed"); }
    [[nodiscard]] bool shown() const override { return open; }
    [[nodiscard]] platform::Instant lastClose() const override { return closed; }
    [[nodiscard]] bool dark() const override { return black; }
    void setTheme(bool dark) override { calls.emplace_back(dark ? "black" : "white"); }
    [[nodiscard]] bool pinned() const override { return pin; }
    void setPinned(bool pinned) override { calls.emplace_back(pinned ? "pin" : "unpin"); }

    bool open = false;
    bool black = false;
    bool pin = false;
    platform::Instant closed = platform::distantPast;
    std::vector<std::string> calls;
};

/// Draws nothing; each character is as wide as the test says.
struct FakeArtist final : ostrel::BarArtist {
    struct Drawn final : platform::StatusItemPicture {
        [[nodiscard]] platform::Image draw(int, int, std::uint32_t) const override { return {}; }
        [[nodiscard]] std::string key() const override { return name; }
        std::string name;
    };
    [[nodiscard]] static Picture named(const std::string& name)
    {
        auto picture = std::make_shared<Drawn>();
        picture->name = name;
        return picture;
    }
    [[nodiscard]] double titleWidth(std::string_view title) const override
    {
        return characterWidth * static_cast<double>(title.size());
    }
    [[nodiscard]] Picture markPicture() const override { return named("mark"); }
    [[nodiscard]] Picture valuePicture(const ostrel::BarValues& values) const override
    {
        std::string name = values.mark ? "mark" : "";
        for (const std::string& figure : values.figures)
            name += " " + figure;
        return named(name);
    }
    double characterWidth = 1;
};

/// The bar item and its menu over fakes.
struct BarBench : StateBench {
    void setUp()
    {
        item.setupStatusItem([this] { return menu.rebuildMenu(); });
    }
    [[nodiscard]] const platform::StatusItemFace& face() const { return bar.faces.back(); }
    [[nodiscard]] std::string state() const
    {
        const auto found = files.contents.find(ostrel::barStateFile(files));
        return found == files.contents.end() ? "" : found->second;
    }

    FakeDoor door;
    FakePanel body;
    FakeStatusBar bar;
    FakeScreens screens;
    FakeArtist artist;
    ostrel::BarStateFile stateFile { { files, defaults, screens, time } };
    ostrel::BarItem item { { bar, time, time, settings, tick, snapshots, door, body, artist, stateFile,
        "icons" } };
    ostrel::ServiceMenu menu { { item, settings, tick, door, door, {}, {}, {},
        [this] { door.calls.emplace_back("about"); }, [this] { door.calls.emplace_back("quit"); } } };
};
