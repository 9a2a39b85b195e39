// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/HotKeyCenter.h"

#include <memory>

namespace platform {

/// The hotkey of a desktop with an X display of its own: the display's grab of a key; and of a Wayland
/// desktop, whose X display has such a grab too but never the keys: the shortcuts' portal. Which of the two
/// is looked at with each registration. Constructing it asks nobody and needs no application object.
class QtHotKeyCenter final : public HotKeyCenter {
public:
    /// Events go through `queue`.
    explicit QtHotKeyCenter(MainQueue& queue);
    QtHotKeyCenter(const QtHotKeyCenter&) = delete;
    QtHotKeyCenter& operator=(const QtHotKeyCenter&) = delete;
    ~QtHotKeyCenter() override;

    void connect(Events events) override;
    [[nodiscard]] bool registerHotKey(const HotKey& hotKey) override;
    void unregisterHotKey() override;
    [[nodiscard]] HotKeyRefusal refusal() const override;
    [[nodiscard]] HotKeyStanding standing() const override;
    [[nodiscard]] std::string desktop() const override;

private:
    class Way;

    std::shared_ptr<Way> way_;
};

} // namespace platform
