// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/OstrelMode.h"

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

    explicit PanelRootView(Actions actions);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    Actions actions_;
};

} // namespace ostrel
