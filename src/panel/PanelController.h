// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/PanelDoor.h"
#include "design/ZOLThemePolicy.h"
#include "panel/PanelFrame.h"
#include "platform/UserDefaults.h"

#include <functional>

class QWidget;

namespace ostrel {

/// Opens and closes the panel. The window is built on the first opening and kept. Main thread.
class PanelController final : public PanelDoor {
public:
    struct Hooks {
        std::function<void(QWidget&)> beforeShow; ///< its window is about to be mapped
        std::function<void()> opened; ///< the panel has just come on screen
        std::function<void()> closed; ///< it has just gone
    };

    PanelController(PanelFrame& frame, const platform::UserDefaults& defaults, Hooks hooks);

    void show() override;
    void close(std::string_view reason) override;
    void toggle() override;
    void showTestbed() override { show(); }
    [[nodiscard]] bool shown() const override { return frame_.shown(); }
    [[nodiscard]] platform::Instant lastClose() const override { return platform::distantPast; }

private:
    void place();

    PanelFrame& frame_;
    const platform::UserDefaults& defaults_;
    Hooks hooks_;
};

} // namespace ostrel
