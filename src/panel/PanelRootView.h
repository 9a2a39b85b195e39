// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/OstrelMode.h"
#include "design/OstrelStyle.h"

#include <QWidget>

#include <functional>
#include <string_view>

namespace ostrel {

/// The panel's window: its ground and outline, its keys, and closing by the desktop.
class PanelRootView final : public QWidget {
public:
    struct Actions {
        std::function<void(OstrelMode)> switchMode;
        std::function<void(std::string_view reason)> close;
    };

    PanelRootView(const OstrelStyle& style, Actions actions);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    OstrelStyle style_;
    Actions actions_;
};

} // namespace ostrel
