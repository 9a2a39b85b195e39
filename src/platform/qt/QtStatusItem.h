// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MainQueue.h"
#include "platform/StatusItem.h"
#include "platform/qt/X11Struts.h"

namespace platform {

/// The bar as a StatusNotifierItem on the session bus, with its menu; where nobody there takes such items, as
/// a small window in the display's tray. With neither an item does nothing.
class QtStatusBar final : public StatusBar {
public:
    /// What people press runs through `queue`, which must outlive every item, as must `struts`.
    QtStatusBar(MainQueue& queue, X11Struts& struts);

    [[nodiscard]] std::unique_ptr<StatusItem> makeItem(
        const std::string& id, const std::string& title, const std::string& iconFolder) override;

private:
    MainQueue& queue_;
    X11Struts& struts_;
};

} // namespace platform
