// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bar/BarItem.h"
#include "bar/Settings.h"
#include "core/LifeToken.h"
#include "core/PanelChoices.h"
#include "core/PanelDoor.h"
#include "platform/Menu.h"
#include "readings/NativeTick.h"

#include <functional>
#include <string>

namespace ostrel {

/// The menu behind the bar item: what the instrument can do without its panel. Main thread.
class ServiceMenu {
public:
    /// The references must outlive the menu. A row whose action is empty is grey.
    struct Owner {
        BarItem& bar;
        const Settings& settings;
        NativeTick& tick;
        PanelDoor& panel;
        PanelChoices& choices;
        std::function<void()> runClean; ///< audits the MCP servers
        std::function<void()> trimLogs; ///< previews the history's compaction
        std::function<void()> deepClean; ///< compacts the history
        std::function<void()> showAbout;
        std::function<void()> quit;
    };

    explicit ServiceMenu(Owner owner);

    /// The rows as of now. Their actions hold beyond the next rebuild, and do nothing after the menu's end.
    [[nodiscard]] platform::Menu rebuildMenu() const;

private:
    [[nodiscard]] platform::Menu actions() const;
    [[nodiscard]] platform::Menu settings() const;
    void appendLooks(platform::Menu& rows) const;
    void appendBar(platform::Menu& rows) const;
    /// A row with a check mark whose action runs only while this menu lives.
    template <typename Call>
    [[nodiscard]] platform::MenuItem check(std::string title, bool on, Call call) const;

    Owner owner_;
    LifeToken life_;
};

} // namespace ostrel
