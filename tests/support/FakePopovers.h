// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Popover.h"

#include "support/CallLog.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

/// Popovers that keep, in order, what was asked of the last one. They hold no view of their own; a test with
/// a toolkit says in `onView` what becomes of views, and in `onShown` what becomes visible.
class FakePopovers final : public platform::Popovers, public Logged {
public:
    [[nodiscard]] std::unique_ptr<platform::Popover> makePopover(double) override
    {
        calls.emplace_back("make");
        note("makes the popover");
        ++alive;
        return std::make_unique<One>(*this);
    }

    /// The desktop takes the popover off the screen, as after a press elsewhere.
    void closeByItself()
    {
        open = false;
        onShown(false);
        didClose();
    }

    std::vector<std::string> calls;
    bool open = false;
    int alive = 0; ///< how many there are
    bool key = true; ///< whether it gets the keyboard when it asks
    bool stuck = false; ///< it stays open when it is asked to close, as in the middle of a movement
    platform::Rect anchor; ///< of the last show, on screen
    platform::Job didClose;
    std::function<void(QWidget*)> onView = [](QWidget*) {};
    std::function<void(bool)> onShown = [](bool) {};

private:
    struct One final : platform::Popover {
        explicit One(FakePopovers& theOwner)
            : owner(theOwner)
        {
        }
        One(const One&) = delete;
        One& operator=(const One&) = delete;
        ~One() override
        {
            owner.note("drops the popover");
            --owner.alive;
            owner.open = false;
            owner.onView(nullptr);
        }
        void setContentView(QWidget* view) override
        {
            owner.calls.emplace_back("view");
            owner.onView(view);
        }
        void layoutContent() override { }
        void setAnimates(bool) override { }
        void setTransient(bool transient) override
        {
            owner.calls.push_back(fmt::format("transient {}", transient));
        }
        void show(const platform::Rect& rect, const platform::AnchorView& view, platform::Edge edge) override
        {
            owner.calls.push_back(fmt::format("show {}", edge == platform::Edge::top ? "above" : "below"));
            owner.note("shows the popover");
            owner.anchor = view.onScreen(rect);
            owner.open = true;
            owner.onShown(true);
        }
        [[nodiscard]] bool isShown() const override { return owner.open; }
        void performClose() override
        {
            owner.calls.emplace_back("perform close");
            if (!owner.stuck)
                owner.closeByItself();
        }
        void close() override
        {
            owner.calls.emplace_back("close");
            owner.closeByItself();
        }
        void setOnDidClose(platform::Job job) override { owner.didClose = std::move(job); }
        void makeKey() override { owner.calls.emplace_back("key"); }
        [[nodiscard]] bool isKey() const override { return owner.key; }

        FakePopovers& owner;
    };
};
