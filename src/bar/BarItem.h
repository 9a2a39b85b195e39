// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bar/Settings.h"
#include "collector/SnapshotCycle.h"
#include "core/PanelDoor.h"
#include "platform/StatusItem.h"
#include "readings/NativeTick.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// The instrument's constant face: the item in the desktop's bar with its tooltip and menu. Main thread.
class BarItem {
public:
    /// Everything but the callbacks must outlive the item.
    struct Owner {
        platform::StatusBar& statusBar;
        const Settings& settings;
        const NativeTick& tick;
        const SnapshotCycle& snapshots;
        PanelDoor& panel;
        std::function<void()> quit;
    };

    explicit BarItem(Owner owner);

    /// Makes the item, once. `mark` is the instrument's mark.
    void setupStatusItem(std::shared_ptr<const platform::StatusItemPicture> mark);
    /// Shows the present values; nothing before `setupStatusItem`.
    void updateStatusButton();
    [[nodiscard]] bool exists() const { return statusItem_ != nullptr; }
    [[nodiscard]] std::optional<platform::Rect> frame() const;
    void panelPlaced(std::string_view) { }
    void applyPendingLength() { }
    /// Takes the item off the bar.
    void removeStatusItem();

    /// The text that the item shows beside, or in place of, its mark.
    [[nodiscard]] std::string title() const;
    [[nodiscard]] platform::Menu menu() const;

private:
    [[nodiscard]] BarReading reading() const;

    Owner owner_;
    std::shared_ptr<const platform::StatusItemPicture> mark_;
    std::unique_ptr<platform::StatusItem> statusItem_;
};

} // namespace ostrel
