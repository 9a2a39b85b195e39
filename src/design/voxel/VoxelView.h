// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/MotionServices.h"
#include "design/ViewVisibility.h"

#include <QString>
#include <QWidget>

#include <functional>
#include <memory>
#include <utility>

namespace ostrel {

/// The creature of the legacy hint card. It bobs for two seconds of its life, while it can be seen, and then
/// stands still. Main thread.
class VoxelView final : public QWidget {
public:
    VoxelView(int width, int height, bool motionEnabled, const MotionServices& services);
    ~VoxelView() override;

    [[nodiscard]] const QString& mood() const { return mood_; }
    /// "attention" turns the cube at its feet red.
    void setMood(const QString& mood);
    void setMotionEnabled(bool enabled);
    /// Called on a press.
    void setOnClick(std::function<void()> onClick) { onClick_ = std::move(onClick); }
    /// Seconds that it has moved so far.
    [[nodiscard]] double phase() const { return phase_; }

    void pause();
    void resume();

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    void fire();

    MotionServices services_;
    ViewVisibility visibility_;
    std::unique_ptr<platform::Observation> displayOptions_;
    std::unique_ptr<platform::Timer> timer_;
    std::function<void()> onClick_;
    QString mood_;
    bool motionEnabled_;
    double phase_ = 0;
};

} // namespace ostrel
