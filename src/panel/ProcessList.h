// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/OstrelData.h"
#include "janitor/ProtectionList.h"
#include "panel/Workloads.h"

#include <QWidget>

#include <map>
#include <vector>

namespace ostrel {

class ProcessRowView;

/// Processes below each other. A list can be hundreds of rows long and is built anew every few seconds: a row
/// is made when it comes near the part that is in view, and stays. Main thread.
class ProcessList final : public QWidget {
public:
    /// `workloads` must outlive the list.
    ProcessList(std::vector<OstrelData::Proc> procs, Workloads& workloads);

protected:
    void showEvent(QShowEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// The scrolled page that this stands on.
    [[nodiscard]] QWidget* page() const { return parentWidget(); }
    void makeRows();
    void makeRow(int at);

    std::vector<OstrelData::Proc> procs_;
    ProtectionRules rules_;
    Workloads& workloads_;
    std::map<int, ProcessRowView*> rows_; ///< those made so far, by place
};

} // namespace ostrel
