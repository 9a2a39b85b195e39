// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MainQueue.h"
#include "platform/StatusItem.h"
#include "platform/qt/X11Struts.h"

#include <functional>

namespace platform {

/// The bar as a StatusNotifierItem on the session bus, with its menu; where nobody there takes such items, as
/// a small window in the display's tray. With neither an item does nothing.
class QtStatusBar final : public StatusBar {
public:
    /// What people press runs through `queue`, which must outlive every item, as must `struts`. Before a
    /// tooltip of the item's own shows, which is in the tray alone, `dressToolTip` has a chance to give it a
    /// face.
    QtStatusBar(
        MainQueue& queue, X11Struts& struts, std::function<void()> dressToolTip = [] {});

    [[nodiscard]] std::unique_ptr<StatusItem> makeItem(
        const std::string& id, const std::string& title, const std::string& iconFolder) override;

private:
    MainQueue& queue_;
    X11Struts& struts_;
    std::function<void()> dressToolTip_;
};

} // namespace platform
