// SPDX-License-Identifier: Apache-2.0
/// A frame of a figure at two pixels a point: its polygons alone, and with their painting. Frames come every
/// 62 ms while something moves; the budget of one is 1.5 ms on a desktop of today.
#include "Toolkit.h"
#include "design/Paint.h"
#include "design/voxel/VoxelFigure.h"
#include "design/voxel/VoxelScene.h"
#include "design/voxel/ZOLVoxelModels.h"
#include "design/voxel/ZOLVoxelMotion.h"

#include <QImage>
#include <QPainter>

#include <span>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

using namespace ostrel;

constexpr double ratio = 2;

enum class Moment { rest, run };

/// A figure that lies still, or one of which some bands fly in, some are home and some still far.
VoxelFigure figure(const ZOLVoxelModel& model, Moment moment)
{
    VoxelFigure figure(model);
    if (moment == Moment::run) {
        figure.beginAppear();
        figure.step(ZOLVoxelMotion::assemble / 2);
    }
    return figure;
}

std::vector<Quad> frame(const VoxelFigure& figure, const SceneRect& bounds)
{
    const std::vector<double> progress = figure.progress();
    return VoxelScene::scene(figure.cubes(), bounds, { .hover = 0.5, .lift = 1, .progress = progress });
}

void scene(benchmark::State& state, const ZOLVoxelModel& model, SceneRect bounds, Moment moment)
{
    const VoxelFigure shown = figure(model, moment);
    for (auto _ : state)
        benchmark::DoNotOptimize(frame(shown, bounds));
}

void sceneAndPainting(benchmark::State& state, const ZOLVoxelModel& model, SceneRect bounds, Moment moment)
{
    startToolkit();
    const VoxelFigure shown = figure(model, moment);
    QImage image(static_cast<int>(bounds.width * ratio), static_cast<int>(bounds.height * ratio),
        QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    for (auto _ : state) {
        image.fill(Qt::white);
        QPainter painter(&image);
        drawQuads(painter, frame(shown, bounds));
    }
}

constexpr SceneRect header { 0, 0, 40, 40 };
constexpr SceneRect dashboard { 0, 0, 200, 186 };

#define FIGURE(model, bounds, moment)                                                                        \
    BENCHMARK_CAPTURE(scene, model##_##bounds##_##moment, ZOLVoxelModels::model(), bounds, Moment::moment)   \
        ->Unit(benchmark::kMicrosecond);                                                                     \
    BENCHMARK_CAPTURE(                                                                                       \
        sceneAndPainting, model##_##bounds##_##moment, ZOLVoxelModels::model(), bounds, Moment::moment)      \
        ->Unit(benchmark::kMicrosecond)

FIGURE(ostrel, header, rest);
FIGURE(ostrel, header, run);
FIGURE(ostrel, dashboard, rest);
FIGURE(ostrel, dashboard, run);
FIGURE(pellam, header, rest);
FIGURE(pellam, header, run);
FIGURE(pellam, dashboard, rest);
FIGURE(pellam, dashboard, run);

} // namespace
