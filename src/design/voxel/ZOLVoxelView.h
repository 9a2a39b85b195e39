// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/LifeToken.h"
#include "design/MotionServices.h"
#include "design/Quad.h"
#include "design/StillImage.h"
#include "design/ViewVisibility.h"
#include "design/voxel/VoxelFigure.h"
#include "design/voxel/VoxelScene.h"

#include <QWidget>

#include <functional>
#include <memory>

namespace ostrel {

/// A figure that flies together when it appears, leans towards the pointer and rises under it while its
/// window has the keyboard, and
/// scatters and falls together again on a click. Its one timer runs only while something moves in a window
/// that can be seen. Main thread.
class ZOLVoxelView final : public QWidget {
public:
    ZOLVoxelView(const ZOLVoxelModel& model, const MotionServices& services, QWidget* parent = nullptr);
    ~ZOLVoxelView() override;

    void setModel(const ZOLVoxelModel& model);
    [[nodiscard]] const VoxelFigure& figure() const { return figure_; }

    void setShowsShadow(bool shows);
    /// The margin around the figure, in cells.
    void setPadding(double cells);
    /// Whether it plays the appear run when it comes on screen; it does unless told otherwise.
    void setAssemblesOnAppear(bool assembles) { assemblesOnAppear_ = assembles; }
    [[nodiscard]] bool assemblesOnAppear() const { return assemblesOnAppear_; }
    /// Called for each accepted click, as it begins.
    void setOnClick(std::function<void()> onClick) { onClick_ = std::move(onClick); }

    /// A click, by whatever means; nothing while the figure is in a run.
    void trigger();
    /// The model's gesture at once, without a scatter.
    void gesture();

    [[nodiscard]] QSize sizeHint() const override;

    /// A model that doesn't move; a template, black and without a shadow, when `mono`.
    [[nodiscard]] static StillImage image(
        const ZOLVoxelModel& model, QSizeF size, bool mono, double ratio = 1);

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    [[nodiscard]] bool movesNow() const;
    void pause();
    void resume();
    void fire();
    void visibilityChanged();
    void follow(double x);
    void beginAppearRun();
    void flash();

    MotionServices services_;
    VoxelFigure figure_;
    ViewVisibility visibility_;
    std::unique_ptr<platform::Observation> displayOptions_;
    std::unique_ptr<platform::Timer> timer_;
    std::function<void()> onClick_;
    double padding_ = 1;
    double hover_ = 0; ///< the pointer's place across the view, -1 to 1
    bool showsShadow_ = true;
    bool assemblesOnAppear_ = true;
    bool appearPending_ = false; ///< the next picture starts the appear run
    LifeToken life_;
};

} // namespace ostrel
