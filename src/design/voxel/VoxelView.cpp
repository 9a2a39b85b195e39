// SPDX-License-Identifier: Apache-2.0
#include "design/voxel/VoxelView.h"

#include "design/Accessibility.h"
#include "design/Appearance.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "design/voxel/CompanionScene.h"

#include <QMouseEvent>
#include <QPainter>
#include <QShowEvent>

namespace ostrel {

namespace {

constexpr double period = 0.16; ///< seconds between two pictures

} // namespace

VoxelView::VoxelView(int width, int height, bool motionEnabled, const MotionServices& services)
    : services_(services)
    , visibility_(*this, services_.occlusion, [this] { resume(); })
    , displayOptions_(services_.workspace.observeDisplayOptions([this] { resume(); }))
    , motionEnabled_(motionEnabled)
{
    setFixedSize(width, height);
    setAccessibleRole(*this, QAccessible::Graphic);
    setMood("calm");
}

VoxelView::~VoxelView() = default;

void VoxelView::setMood(const QString& mood)
{
    mood_ = mood;
    setAccessibleName(QString::fromUtf8("Voxel companion · ") + mood);
    update();
}

void VoxelView::setMotionEnabled(bool enabled)
{
    motionEnabled_ = enabled;
    resume();
    update();
}

void VoxelView::pause() { timer_.reset(); }

void VoxelView::resume()
{
    pause();
    if (phase_ < CompanionScene::lively && motionEnabled_ && !services_.reduceMotion()
        && visibility_.visible() && !services_.selfTest)
        timer_ = services_.runLoop.scheduleRepeating(platform::Seconds(period), [this] { fire(); });
}

void VoxelView::fire()
{
    if (!visibility_.visible() || services_.reduceMotion()) {
        pause();
        return;
    }
    phase_ += period;
    if (phase_ >= CompanionScene::lively)
        pause();
    update();
}

void VoxelView::paintEvent(QPaintEvent*)
{
    const auto mode = appearanceOf(*this);
    const bool moves = motionEnabled_ && !services_.reduceMotion();
    const CompanionScene::Colors colors { .floor = OstrelStyle::fill.in(mode),
        .shade = OstrelStyle::ink.in(mode),
        .signal = mood_ == "attention" ? OstrelStyle::red.in(mode) : CompanionScene::calmSignal };
    QPainter painter(this);
    drawQuads(
        painter, CompanionScene::scene(width(), height(), moves ? CompanionScene::bob(phase_) : 0, colors));
}

void VoxelView::showEvent(QShowEvent* event)
{
    if (!event->spontaneous())
        visibility_.attach();
    resume();
}

void VoxelView::hideEvent(QHideEvent* event)
{
    if (!event->spontaneous())
        visibility_.detach();
    resume();
}

void VoxelView::mousePressEvent(QMouseEvent* event)
{
    if (const auto onClick = onClick_; onClick && event->button() == Qt::LeftButton)
        onClick();
    else
        QWidget::mousePressEvent(event);
}

} // namespace ostrel
