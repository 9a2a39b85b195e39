// SPDX-License-Identifier: Apache-2.0
#include "design/voxel/ZOLVoxelView.h"

#include "design/Accessibility.h"
#include "design/Keys.h"
#include "design/Paint.h"
#include "design/ZOLAppMarkView.h"
#include "design/voxel/ZOLVoxelMotion.h"

#include <QEnterEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QShowEvent>

#include <algorithm>

namespace ostrel {

namespace {

constexpr int naturalSide = 56;
constexpr double imagePadding = 0.5;
constexpr double ringInset = 1;
constexpr double ringRadius = 8;

} // namespace

ZOLVoxelView::ZOLVoxelView(const ZOLVoxelModel& model, const MotionServices& services, QWidget* parent)
    : QWidget(parent)
    , services_(services)
    , figure_(model)
    , visibility_(*this, services_.occlusion, [this] { visibilityChanged(); })
    , displayOptions_(services_.workspace.observeDisplayOptions([this] { visibilityChanged(); }))
{
    setAccessibleRole(*this, QAccessible::Graphic);
    setAccessibleName(QString::fromStdString(model.label));
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::TabFocus);
    setMouseTracking(true);
}

ZOLVoxelView::~ZOLVoxelView() = default;

void ZOLVoxelView::setModel(const ZOLVoxelModel& model)
{
    figure_.setModel(model);
    pause();
    setAccessibleName(QString::fromStdString(model.label));
    update();
}

void ZOLVoxelView::setShowsShadow(bool shows)
{
    showsShadow_ = shows;
    update();
}

void ZOLVoxelView::setPadding(double cells)
{
    padding_ = cells;
    update();
}

QSize ZOLVoxelView::sizeHint() const { return { naturalSide, naturalSide }; }

bool ZOLVoxelView::movesNow() const
{
    return !services_.reduceMotion() && visibility_.visible() && !services_.selfTest;
}

void ZOLVoxelView::trigger()
{
    if (figure_.running())
        return;
    if (movesNow()) {
        figure_.beginClick();
        resume();
    } else {
        gesture();
    }
    update();
    // The handler may well destroy this view.
    if (const auto onClick = onClick_)
        onClick();
}

void ZOLVoxelView::gesture()
{
    figure_.applyStateGesture();
    flash();
    update();
}

void ZOLVoxelView::flash()
{
    const auto hold = figure_.flashHold();
    if (!hold)
        return;
    figure_.startFlash();
    // In a run the clock ends the flash.
    if (!figure_.running() && !services_.selfTest)
        services_.mainQueue.postAfter(platform::Seconds(*hold), life_.guard([this] {
            figure_.restoreFlash();
            update();
        }));
}

void ZOLVoxelView::pause() { timer_.reset(); }

void ZOLVoxelView::resume()
{
    pause();
    if (services_.reduceMotion()) {
        if (figure_.running())
            figure_.endRun();
        figure_.dropLift();
    } else if (figure_.needsTimer() && visibility_.visible() && !services_.selfTest) {
        timer_ = services_.runLoop.scheduleRepeating(
            platform::Seconds(ZOLVoxelMotion::tick), [this] { fire(); });
    }
}

void ZOLVoxelView::fire()
{
    if (visibility_.visible() && !services_.reduceMotion()) {
        // By the fixed step and not by the time that passed: a late firing makes it slower, never jumpy.
        figure_.step(ZOLVoxelMotion::tick);
        update();
        if (!figure_.needsTimer())
            pause();
        return;
    }
    pause();
    if (services_.reduceMotion())
        figure_.endRun();
}

void ZOLVoxelView::visibilityChanged()
{
    resume();
    update();
}

void ZOLVoxelView::beginAppearRun()
{
    if (figure_.running() || !visibility_.visible() || services_.reduceMotion())
        return;
    figure_.beginAppear();
    resume();
    update();
}

void ZOLVoxelView::paintEvent(QPaintEvent*)
{
    const std::vector<double> progress = figure_.progress();
    const VoxelScene::Look look {
        .pad = padding_, .shadow = showsShadow_, .hover = hover_, .lift = figure_.lift(), .progress = progress
    };
    const SceneRect bounds { 0, 0, width() + 0.0, height() + 0.0 };
    QPainter painter(this);
    drawQuads(painter, VoxelScene::scene(figure_.cubes(), bounds, look));
    if (hasFocus())
        drawFocusRing(painter, QRectF(rect()), ringInset, ringRadius, ZOLAppMarkView::ink);
    if (appearPending_ && visibility_.visible()) {
        // The first picture is the whole figure; it flies apart and together from the next turn on.
        appearPending_ = false;
        services_.mainQueue.post(life_.guard([this] { beginAppearRun(); }));
    }
}

void ZOLVoxelView::showEvent(QShowEvent* event)
{
    if (!event->spontaneous()) {
        visibility_.attach();
        appearPending_ = assemblesOnAppear_ && !services_.reduceMotion() && !services_.selfTest;
    }
    visibilityChanged();
}

void ZOLVoxelView::hideEvent(QHideEvent* event)
{
    if (event->spontaneous()) {
        visibilityChanged();
        return;
    }
    visibility_.detach();
    appearPending_ = false;
    pause();
}

void ZOLVoxelView::enterEvent(QEnterEvent* event)
{
    if (!isActiveWindow())
        return;
    figure_.setLiftTarget(1);
    follow(event->position().x());
    resume();
}

void ZOLVoxelView::leaveEvent(QEvent*)
{
    hover_ = 0;
    figure_.setLiftTarget(0);
    update();
    resume();
}

void ZOLVoxelView::mouseMoveEvent(QMouseEvent* event) { follow(event->position().x()); }

void ZOLVoxelView::follow(double x)
{
    if (services_.reduceMotion() || width() <= 0 || !isActiveWindow())
        return;
    hover_ = std::clamp(x / width() * 2 - 1, -1.0, 1.0);
    update();
}

void ZOLVoxelView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        trigger();
    else
        QWidget::mousePressEvent(event);
}

void ZOLVoxelView::keyPressEvent(QKeyEvent* event)
{
    if (isPressKey(*event))
        trigger();
    else
        QWidget::keyPressEvent(event);
}

StillImage ZOLVoxelView::image(const ZOLVoxelModel& model, QSizeF size, bool mono, double ratio)
{
    StillImage still = StillImage::sized(size.width(), size.height(), ratio);
    still.isTemplate = mono;
    still.accessibilityDescription = QString::fromStdString(model.label);
    const VoxelScene::Look look { .pad = mono ? 0 : imagePadding, .shadow = !mono, .mono = mono };
    QPainter painter(&still.image);
    drawQuads(painter,
        VoxelScene::scene(VoxelScene::sorted(model.voxels), { 0, 0, size.width(), size.height() }, look));
    return still;
}

} // namespace ostrel
