// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/MotionServices.h"
#include "hints/HintStage.h"

#include <QWidget>

namespace ostrel {

class OstrelButton;
class VoxelView;

/// The system's own hint card: the creature, what has happened, and two answers. It follows the theme. Main
/// thread.
class LegacyHintCard final : public QWidget {
public:
    static constexpr double radius = 16; ///< of its corners, in points

    /// `moves`: whether the creature may.
    LegacyHintCard(
        const HintText& text, bool moves, const MotionServices& services, const HintAnswers& answers);

    [[nodiscard]] VoxelView& hintVoxel() const { return *hintVoxel_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    VoxelView* hintVoxel_;
};

} // namespace ostrel
