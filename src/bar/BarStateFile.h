// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bar/BarTitle.h"
#include "platform/Clock.h"
#include "platform/FileManager.h"
#include "platform/Screens.h"
#include "platform/StatusItem.h"
#include "platform/UserDefaults.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// The bar item as it stands at this moment.
struct BarItemState {
    BarDisplayMode mode = BarDisplayMode::mark;
    double length = 0; ///< in points
    std::optional<platform::StatusItemPlacement> placement; ///< nothing while no host has the item
};

/// Whether a bar item there can be seen: its host shows it, and it lies in a bar of its display. Bars are
/// the edges on which the desktop reserves room; where it reserves none, any edge may have one.
[[nodiscard]] bool looksPainted(
    const platform::StatusItemPlacement& placement, const std::vector<platform::Screen>& screens);

/// Keeps a small file with the bar item's real geometry, from which a person or a script learns whether the
/// item is really there. It is written when something changed or the file is gone; what can't be written is
/// dropped. Main thread.
class BarStateFile {
public:
    static constexpr std::string_view barAutosaveName = "dev.quent.ostrel.status-item.v3";

    /// All of it must outlive the file.
    struct Owner {
        platform::FileManager& files;
        const platform::UserDefaults& defaults;
        const platform::Screens& screens;
        const platform::Clock& clock;
    };

    explicit BarStateFile(const Owner& owner);

    /// Who tells the item's state; empty while there is no item.
    void connect(std::function<BarItemState()> item);
    /// On which display the panel opened last, and from what. Told with the next write.
    void setLastPanelScreen(std::string text);
    /// Writes when something changed; nothing while there is no item.
    void writeBarState();

private:
    [[nodiscard]] std::string stateText() const;

    Owner owner_;
    std::string path_; ///< empty before the first write
    std::function<BarItemState()> item_;
    std::string lastPanelScreen_ = "not opened yet";
    std::string lastBarState_; ///< all that was written but the time
};

/// Where the bar item's state file stands, as a full path.
[[nodiscard]] std::string barStateFile(const platform::FileManager& files);

/// The file's text without blanks and line breaks at both ends; nothing when it can't be read.
[[nodiscard]] std::optional<std::string> readBarState(const platform::FileManager& files);

} // namespace ostrel
