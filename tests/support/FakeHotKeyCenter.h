// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/HotKeyCenter.h"

#include "support/CallLog.h"

#include <optional>
#include <set>
#include <string>
#include <utility>

/// A desktop that gives a combination unless another program has its key.
class FakeHotKeyCenter final : public platform::HotKeyCenter, public Logged {
public:
    void connect(Events news) override
    {
        note("listens to the hotkey");
        events = std::move(news);
    }
    [[nodiscard]] bool registerHotKey(const platform::HotKey& hotKey) override
    {
        note("takes the hotkey");
        ++asked;
        registered.reset();
        stands = {};
        if (why != platform::HotKeyRefusal::held || taken.contains(hotKey.keyCode))
            return false;
        registered = hotKey;
        stands.kind = platform::HotKeyStanding::Kind::held;
        return true;
    }
    void unregisterHotKey() override
    {
        note("gives the hotkey back");
        registered.reset();
        stands = {};
    }
    [[nodiscard]] platform::HotKeyRefusal refusal() const override { return why; }
    [[nodiscard]] platform::HotKeyStanding standing() const override { return stands; }
    [[nodiscard]] std::string desktop() const override { return "XFCE"; }

    Events events;
    std::optional<platform::HotKey> registered;
    std::set<std::uint32_t> taken; ///< key codes that another program has
    platform::HotKeyRefusal why = platform::HotKeyRefusal::held; ///< any other: nothing is had at all
    platform::HotKeyStanding stands;
    int asked = 0; ///< for how many combinations
};
