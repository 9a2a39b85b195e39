// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/OstrelData.h"
#include "panel/Workloads.h"

#include <QPoint>
#include <QWidget>

#include <optional>

namespace ostrel {

class OstrelButton;

/// One process of the processes tab: its figures, the button that stops it, and the same in a menu of its
/// own, for the pointer, the keyboard and assistive technology. Main thread.
class ProcessRowView final : public QWidget {
public:
    static constexpr int height = 44; ///< points

    /// `workloads` must outlive the row.
    ProcessRowView(const OstrelData::Proc& proc, bool isProtected, Workloads& workloads, QWidget* parent);

    [[nodiscard]] const OstrelData::Proc& proc() const { return proc_; }
    /// What the keyboard comes to: the button, or the row itself where that can't be pressed.
    [[nodiscard]] QWidget& keyboardView();

protected:
    void paintEvent(QPaintEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    /// At a place of the screen, or, where no pointer asks for it, at the name.
    void showMenu(std::optional<QPoint> pointer);

    OstrelData::Proc proc_;
    bool isProtected_;
    Workloads& workloads_;
    OstrelButton* button_;
};

} // namespace ostrel
