// SPDX-License-Identifier: Apache-2.0
#include "design/voxel/VoxelFigure.h"

#include "design/voxel/VoxelScene.h"
#include "design/voxel/ZOLVoxelMotion.h"

#include <algorithm>
#include <cstdlib>
#include <tuple>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr double idle = -1;
constexpr double clickEnd = ZOLVoxelMotion::scatter + ZOLVoxelMotion::reassemble;
/// A band leaves within this share of the scatter.
constexpr double scatterShare = 0.6;
constexpr double shortestFlash = 0.04;
constexpr double longestFlash = 0.6;

std::string keyOf(const ZOLVoxelCell& cell) { return fmt::format("{},{},{}", cell.x, cell.y, cell.z); }

} // namespace

void VoxelFigure::setModel(const ZOLVoxelModel& model)
{
    model_ = model;
    cubes_ = VoxelScene::sorted(model_.voxels);
    const auto isRed = [](const ZOLVoxel& cube) { return cube.c == ZOLVoxelColor::red; };
    signalIndex_.reset();
    if (std::ranges::count_if(cubes_, isRed) == 1)
        signalIndex_ = static_cast<std::size_t>(std::ranges::find_if(cubes_, isRed) - cubes_.begin());
    transfers_ = 0;
    cycleIndex_ = 0;
    cycleBase_.clear();
    flashBackup_.clear();
    phase_ = idle;
    flashUntil_ = idle;
}

void VoxelFigure::beginAppear()
{
    run_ = Run::appear;
    phase_ = 0;
}

void VoxelFigure::beginClick()
{
    run_ = Run::click;
    gestureApplied_ = false;
    flashUntil_ = idle;
    restoreFlash();
    phase_ = 0;
}

void VoxelFigure::endRun()
{
    phase_ = idle;
    restoreFlash();
}

void VoxelFigure::dropLift()
{
    lift_ = 0;
    liftTarget_ = 0;
}

void VoxelFigure::step(double dt)
{
    if (lift_ != liftTarget_) {
        const double d = dt / ZOLVoxelMotion::hover;
        lift_ = liftTarget_ <= lift_ ? std::max(liftTarget_, lift_ - d) : std::min(liftTarget_, lift_ + d);
    }
    if (!running())
        return;
    phase_ += dt;
    if (run_ == Run::appear) {
        if (phase_ >= ZOLVoxelMotion::assemble)
            phase_ = idle;
        return;
    }
    // The figure changes while it is in pieces.
    if (phase_ >= ZOLVoxelMotion::scatter && !gestureApplied_) {
        gestureApplied_ = true;
        applyStateGesture();
    }
    if (phase_ >= clickEnd && flashUntil_ < 0) {
        const auto hold = flashHold();
        if (!hold) {
            phase_ = idle;
            return;
        }
        startFlash();
        flashUntil_ = clickEnd + *hold;
    }
    if (flashUntil_ >= 0 && phase_ >= flashUntil_) {
        restoreFlash();
        flashUntil_ = idle;
        phase_ = idle;
    }
}

double VoxelFigure::scatterProgress(double band) const
{
    using namespace ZOLVoxelMotion;
    if (!running())
        return 0;
    if (run_ == Run::appear)
        return 1 - assembleProgress(phase_, assemble, band);
    if (phase_ >= scatter)
        return 1 - assembleProgress(phase_ - scatter, reassemble, band);
    const double window = scatter * scatterShare;
    const double start = (1 - band) * (scatter - window);
    return VoxelScene::cubicIn(std::clamp((phase_ - start) / window, 0.0, 1.0));
}

std::vector<double> VoxelFigure::progress() const
{
    if (!running())
        return {};
    std::vector<double> list = VoxelScene::bands(cubes_);
    std::ranges::transform(list, list.begin(), [this](double band) { return scatterProgress(band); });
    return list;
}

void VoxelFigure::applyStateGesture()
{
    if (model_.gesture)
        std::visit([this](const auto& gesture) { apply(gesture); }, *model_.gesture);
    else
        transferSignal();
}

void VoxelFigure::apply(const ZOLVoxelMirror& mirror)
{
    int ZOLVoxel::*const coordinate = mirror.axis == "x" ? &ZOLVoxel::x
        : mirror.axis == "y"                             ? &ZOLVoxel::y
                                                         : &ZOLVoxel::z;
    if (cubes_.empty())
        return;
    const auto [least, most] = std::ranges::minmax(cubes_, {}, coordinate);
    // Between the extremes it fits again, whatever they are.
    const std::int64_t sum = std::int64_t { least.*coordinate } + most.*coordinate;
    for (ZOLVoxel& cube : cubes_)
        cube.*coordinate = static_cast<int>(sum - cube.*coordinate);
    cubes_ = VoxelScene::sorted(cubes_);
}

void VoxelFigure::apply(const ZOLVoxelCycle& cycle)
{
    if (cycle.cells.size() < 2)
        return;
    if (cycleBase_.empty()) {
        ZOLVoxelColor fallback = ZOLVoxelColor::mid;
        for (const ZOLVoxelCell& cell : cycle.cells)
            if (const auto at = cellIndex(cell); at && cubes_[*at].c != cycle.color) {
                fallback = cubes_[*at].c;
                break;
            }
        for (const ZOLVoxelCell& cell : cycle.cells) {
            const auto at = cellIndex(cell);
            const ZOLVoxelColor now = at ? cubes_[*at].c : fallback;
            cycleBase_[keyOf(cell)] = now == cycle.color ? fallback : now;
        }
    }
    const std::size_t next = (cycleIndex_ + 1) % cycle.cells.size();
    const ZOLVoxelCell& current = cycle.cells[cycleIndex_];
    if (const auto at = cellIndex(current)) {
        const auto base = cycleBase_.find(keyOf(current));
        cubes_[*at].c = base == cycleBase_.end() ? ZOLVoxelColor::mid : base->second;
    }
    if (const auto at = cellIndex(cycle.cells[next]))
        cubes_[*at].c = cycle.color;
    cycleIndex_ = next;
}

void VoxelFigure::transferSignal()
{
    if (!signalIndex_)
        return;
    const ZOLVoxel signal = cubes_[*signalIndex_];
    struct Candidate {
        std::int64_t distance;
        int x;
        int z;
        std::size_t index;
    };
    std::vector<Candidate> nearest;
    for (std::size_t i = 0; i < cubes_.size(); ++i) {
        const ZOLVoxel& cube = cubes_[i];
        if (i == *signalIndex_ || cube.y != signal.y || cube.c == ZOLVoxelColor::light)
            continue;
        const std::int64_t distance
            = std::abs(std::int64_t { cube.x } - signal.x) + std::abs(std::int64_t { cube.z } - signal.z);
        if (!nearest.empty() && distance < nearest.front().distance)
            nearest.clear();
        if (nearest.empty() || distance == nearest.front().distance)
            nearest.push_back({ distance, cube.x, cube.z, i });
    }
    if (nearest.empty())
        return;
    std::ranges::stable_sort(nearest, {}, [](const Candidate& one) { return std::pair(one.x, one.z); });
    const std::size_t pick = nearest[transfers_ % nearest.size()].index;
    ++transfers_;
    const ZOLVoxelColor old = cubes_[pick].c;
    cubes_[pick].c = ZOLVoxelColor::red;
    cubes_[*signalIndex_].c = old == ZOLVoxelColor::red ? ZOLVoxelColor::ink : old;
    signalIndex_ = pick;
}

std::optional<double> VoxelFigure::flashHold() const
{
    const auto* flash = model_.gesture ? std::get_if<ZOLVoxelFlash>(&*model_.gesture) : nullptr;
    if (!flash)
        return std::nullopt;
    return std::min(longestFlash, std::max(shortestFlash, flash->hold));
}

void VoxelFigure::startFlash()
{
    const auto* flash = model_.gesture ? std::get_if<ZOLVoxelFlash>(&*model_.gesture) : nullptr;
    if (!flash)
        return;
    restoreFlash();
    for (const ZOLVoxelCell& cell : flash->cells) {
        if (const auto at = cellIndex(cell)) {
            flashBackup_.emplace_back(*at, cubes_[*at].c);
            cubes_[*at].c = flash->color;
        }
    }
}

void VoxelFigure::restoreFlash()
{
    // Backwards, since a cell that is listed twice was backed up with the flash's own colour the second time.
    while (!flashBackup_.empty()) {
        const auto [index, color] = flashBackup_.back();
        flashBackup_.pop_back();
        if (index < cubes_.size())
            cubes_[index].c = color;
    }
}

std::optional<std::size_t> VoxelFigure::cellIndex(const ZOLVoxelCell& cell) const
{
    const auto at = std::ranges::find(cubes_, cell, &ZOLVoxel::cell);
    if (at == cubes_.end())
        return std::nullopt;
    return static_cast<std::size_t>(at - cubes_.begin());
}

} // namespace ostrel
