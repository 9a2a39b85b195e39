// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/EventMonitor.h"
#include "platform/Popover.h"
#include "platform/Window.h"

#include "support/Observers.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

/// A popover, a window, what they hang from and the mouse outside of them: all that is asked is written down.
struct FakeSurfaceHosts : platform::Popover, platform::Window, platform::AnchorView, platform::EventMonitor {
    using Rect = platform::Rect;

    void layoutContent() override { calls.emplace_back("layout"); }
    void setAnimates(bool animates) override { calls.push_back(fmt::format("animates {}", animates)); }
    void show(const Rect& r, const AnchorView&, platform::Edge edge) override
    {
        calls.push_back(fmt::format("show {} at {}", said(r), static_cast<int>(edge)));
    }
    void performClose() override
    {
        calls.emplace_back("close");
        onClose();
    }
    void setContentView(QWidget*) override { }
    void setTransient(bool) override { }
    [[nodiscard]] bool isShown() const override { return false; }
    void close() override { performClose(); }
    void setOnDidClose(platform::Job didClose) override { onClose = std::move(didClose); }
    void makeKey() override { }
    [[nodiscard]] bool isKey() const override { return false; }

    void display() override { calls.emplace_back("display"); }
    [[nodiscard]] Rect frame() const override { return { 10, 100, 200, 50 }; }
    void setFrame(const Rect& frame) override { calls.push_back("frame " + said(frame)); }
    void setAlpha(double alpha) override { calls.push_back(fmt::format("alpha {}", alpha)); }
    void animate(platform::Seconds duration, double alpha, const Rect& frame) override
    {
        calls.push_back(fmt::format("in {} to {}, {}", duration.count(), alpha, said(frame)));
    }
    void orderFront() override { calls.emplace_back("front"); }
    void orderOut() override { calls.emplace_back("out"); }

    [[nodiscard]] Rect bounds() const override { return { 0, 0, 24, 22 }; }
    [[nodiscard]] Rect onScreen(const Rect& rect) const override { return rect; }
    [[nodiscard]] std::unique_ptr<platform::Observation> monitorMouseDown(platform::Job pressed) override
    {
        return monitors.add(std::move(pressed));
    }
    [[nodiscard]] std::unique_ptr<platform::Observation> monitorKeyDown(
        std::function<bool(const platform::KeyDown&)> take) override
    {
        return keyMonitors.add([this, take = std::move(take)] { keyTaken = take(key) || keyTaken; });
    }
    /// A key goes down in the program; whether somebody took it.
    bool press(const platform::KeyDown& down)
    {
        key = down;
        keyTaken = false;
        keyMonitors.tell();
        return keyTaken;
    }

    static std::string said(const Rect& r) { return fmt::format("{},{} {}x{}", r.x, r.y, r.width, r.height); }

    std::vector<std::string> calls;
    platform::Job onClose = [] {};
    Observers monitors;
    Observers keyMonitors;
    platform::KeyDown key; ///< that went down last
    bool keyTaken = false;
};
