// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/ThemedColor.h"

#include <QFont>
#include <QMenu>
#include <QString>

#include <functional>
#include <vector>

namespace ostrel {

/// A menu that opens over the panel, in its face and its colours. It deletes itself when it closes, and
/// closes when its window does. Main thread.
class PanelMenu final : public QMenu {
public:
    struct Row {
        QString text; ///< what is shown and told; no character of it marks a mnemonic
        QString title; ///< the same in plain words, which nothing shows
        double size = 12; ///< points
        QFont::Weight weight = QFont::Normal;
        ThemedColor color;
        std::function<void()> handler = {}; ///< without one the row can't be chosen
    };

    /// In the appearance of that view. Nothing that the rows do may refer to it: it may go while the menu is
    /// up.
    explicit PanelMenu(const QWidget& view);

    void add(const Row& row);
    /// Opens at a place of the screen. Where no pointer asks for it, the first row that can be chosen is
    /// ready to be: return takes it, and assistive technology reads it out.
    void open(const QPoint& place, bool byPointer);

protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::vector<Row> rows_; ///< as many as there are actions that aren't separators, in their order
};

} // namespace ostrel
