// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/OstrelData.h"
#include "panel/Workloads.h"

#include <QWidget>

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
    void showMenu(const QPoint& place);
    /// Where a menu opens that no pointer asked for.
    [[nodiscard]] QPoint menuPlace() const;

    OstrelData::Proc proc_;
    bool isProtected_;
    Workloads& workloads_;
    OstrelButton* button_;
};

} // namespace ostrel
