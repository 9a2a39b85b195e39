// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/voxel/ZOLVoxelModel.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ostrel {

/// A figure's state and clock: its cubes as clicks have changed them, the run that it is in, how far it has
/// risen. Time comes in through `step`, in seconds.
class VoxelFigure {
public:
    enum class Run { appear, click };

    explicit VoxelFigure(const ZOLVoxelModel& model) { setModel(model); }

    /// Starts over with another figure.
    void setModel(const ZOLVoxelModel& model);

    [[nodiscard]] const ZOLVoxelModel& model() const { return model_; }
    /// The working copy, always in drawing order; the model stays as it is.
    [[nodiscard]] const std::vector<ZOLVoxel>& cubes() const { return cubes_; }
    /// The one red cube; absent when there are several, or none.
    [[nodiscard]] std::optional<std::size_t> signalIndex() const { return signalIndex_; }
    /// Seconds into the run; negative while idle.
    [[nodiscard]] double phase() const { return phase_; }
    [[nodiscard]] bool running() const { return phase_ >= 0; }
    [[nodiscard]] Run run() const { return run_; }
    [[nodiscard]] double lift() const { return lift_; }
    /// Whether anything moves.
    [[nodiscard]] bool needsTimer() const { return running() || lift_ != liftTarget_; }

    void setLiftTarget(double target) { liftTarget_ = target; }
    void beginAppear();
    void beginClick();
    /// Ends a run where it stands, with a flash's cells as they were.
    void endRun();
    /// Nothing risen, nothing rising.
    void dropLift();
    void step(double dt);

    /// How far away each cube is now, 0 at home to 1.
    [[nodiscard]] std::vector<double> progress() const;
    [[nodiscard]] double scatterProgress(double band) const;

    /// What the model's gesture does to the figure; a flash isn't part of it.
    void applyStateGesture();
    /// How long a flash stays, within its limits; absent for every other gesture.
    [[nodiscard]] std::optional<double> flashHold() const;
    /// Paints the cells of a flash gesture; nothing for every other.
    void startFlash();
    void restoreFlash();

    [[nodiscard]] std::optional<std::size_t> cellIndex(const ZOLVoxelCell& cell) const;

private:
    void apply(const ZOLVoxelFlash&) { }
    void apply(const ZOLVoxelMirror& mirror);
    void apply(const ZOLVoxelCycle& cycle);
    void transferSignal();

    ZOLVoxelModel model_;
    std::vector<ZOLVoxel> cubes_;
    std::optional<std::size_t> signalIndex_;
    std::size_t transfers_ = 0;
    std::size_t cycleIndex_ = 0;
    std::map<std::string, ZOLVoxelColor> cycleBase_; ///< by "{x},{y},{z}"
    std::vector<std::pair<std::size_t, ZOLVoxelColor>> flashBackup_;
    double phase_ = -1;
    Run run_ = Run::click;
    bool gestureApplied_ = false;
    double flashUntil_ = -1;
    double lift_ = 0;
    double liftTarget_ = 0;
};

} // namespace ostrel
