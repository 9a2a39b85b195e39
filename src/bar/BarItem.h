// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bar/BarArtist.h"
#include "bar/BarStateFile.h"
#include "bar/BarTitle.h"
#include "bar/Settings.h"
#include "collector/SnapshotCycle.h"
#include "core/LifeToken.h"
#include "core/PanelBody.h"
#include "core/PanelDoor.h"
#include "platform/Clock.h"
#include "platform/MainQueue.h"
#include "platform/StatusItem.h"
#include "readings/NativeTick.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace ostrel {

/// The instrument's constant face: the item in the desktop's bar, what it shows, and what a press on it does.
/// Main thread.
class BarItem {
public:
    /// All of it must outlive the item.
    struct Owner {
        platform::StatusBar& statusBar;
        platform::MainQueue& mainQueue;
        const platform::Clock& clock;
        Settings& settings;
        const NativeTick& tick;
        const SnapshotCycle& snapshots;
        PanelDoor& panel;
        PanelBody& body;
        const BarArtist& artist;
        BarStateFile& stateFile;
        std::string iconFolder; ///< holds the icon theme with the mark; empty for none
    };

    explicit BarItem(Owner owner);
    BarItem(const BarItem&) = delete;
    BarItem& operator=(const BarItem&) = delete;
    ~BarItem();

    /// Makes the item, once. `menu` builds its menu each time that it is about to open.
    void setupStatusItem(std::function<platform::Menu()> menu);
    /// Shows the present values; nothing before `setupStatusItem`.
    void updateStatusButton();
    /// The panel has closed: takes the width that was held back while it hung from the item.
    void applyPendingLength();
    /// Whether there is an item, shown or not.
    [[nodiscard]] bool exists() const { return statusItem_ != nullptr; }
    /// Where it is on screen; nothing while no host has it.
    [[nodiscard]] std::optional<platform::Rect> frame() const;
    /// Takes the item off the bar.
    void removeStatusItem();

    /// Sets and stores what the item shows. The first request for `hidden` only asks for a confirmation.
    void setBarMode(BarDisplayMode mode);
    /// Chooses a value or drops it, and stores that. In place of the last one comes swap.
    void toggleBarPart(BarPart part);
    /// The two answers to the confirmation.
    void confirmHiddenBar();
    void cancelHiddenBar();
    /// Whether the confirmation is open.
    [[nodiscard]] bool hiddenConfirmPending() const { return hiddenConfirmPending_; }

    /// The text that the item shows beside, or in place of, its mark.
    [[nodiscard]] std::string title() const;
    /// What its texts are made of at this moment.
    [[nodiscard]] BarReading reading() const;

private:
    void statusItemAction(const platform::StatusItemPress& press);
    void setLength(double desired);
    void drawFace(const BarReading& reading);
    [[nodiscard]] BarItemState state() const;

    Owner owner_;
    std::unique_ptr<platform::StatusItem> statusItem_;
    platform::StatusItemFace face_; ///< as the item shows it
    std::optional<std::pair<BarDisplayMode, std::string>> drawn_; ///< mode and text of `face_`
    double desired_ = 0; ///< the width that these want, in points
    double length_ = variableLength;
    std::optional<double> pendingBarLength_; ///< held back while the panel is shown
    bool hiddenConfirmPending_ = false;
    LifeToken life_;

    /// Of an item whose width was never set.
    static constexpr double variableLength = -1;
};

} // namespace ostrel
