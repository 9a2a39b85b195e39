// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/voxel/AutomationBadge.h"

#include <QWidget>

namespace ostrel {

/// The badge of an automation: its shape tells the scheduler, its colours the state. Main thread.
class AutomationVoxelView final : public QWidget {
public:
    AutomationVoxelView(AutomationVoxelFamily family, AutomationVoxelState state, double size = 18);

    /// The edge of a cell in points.
    [[nodiscard]] double unit() const { return unit_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    AutomationVoxelFamily family_;
    AutomationVoxelState state_;
    double unit_;
};

} // namespace ostrel
