// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/OstrelMode.h"

#include <QWidget>

#include <functional>
#include <string_view>

class QScrollArea;

namespace ostrel {

/// The root of the panel's frame: its ground with round corners, and its keys.
class PanelRootView final : public QWidget {
public:
    struct Actions {
        std::function<void(OstrelMode)> switchMode;
        std::function<void(std::string_view reason)> escape;
        std::function<void(std::string_view reason)> close;
        std::function<void()> help;
    };

    explicit PanelRootView(Actions actions);

    /// What the keys for moving about scroll; it stands in this view.
    void setScrollArea(QScrollArea* scroll) { scroll_ = scroll; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    /// Whether the key scrolled the body.
    bool scrolls(int key);

    Actions actions_;
    QScrollArea* scroll_ = nullptr;
};

} // namespace ostrel
