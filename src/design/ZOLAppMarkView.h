// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/Color.h"
#include "design/StillImage.h"
#include "design/ZOLAppMark.h"

#include <QPainterPath>
#include <QPointF>
#include <QRectF>
#include <QWidget>

#include <functional>
#include <span>

class QPainter;

namespace ostrel {

/// A line mark, square and of fixed size. With a callback it is pressed by mouse, space and return; without
/// one it is inert and passes all input on. It is drawn in its light look always. Main thread.
class ZOLAppMarkView final : public QWidget {
public:
    static constexpr double headerSize = 40;
    static constexpr double menuBarSize = 18;

    static const Color ink;
    static const Color signal;

    explicit ZOLAppMarkView(ZOLAppMark mark, double size = headerSize, QWidget* parent = nullptr);

    [[nodiscard]] ZOLAppMark mark() const { return mark_; }
    void setMark(ZOLAppMark mark);
    void setOnClick(std::function<void()> onClick);

    [[nodiscard]] QSize sizeHint() const override;

    /// Draws a mark as large as fits into the rectangle, centred. `mono` is black, without the red tab.
    static void draw(QPainter& painter, ZOLAppMark mark, const QRectF& rect, bool mono);
    /// A mark of `size` points a side at `ratio` pixels a point; a template when `mono`.
    [[nodiscard]] static StillImage image(ZOLAppMark mark, double size, bool mono, double ratio = 1);
    /// The commands as a path, each point scaled and then moved to the origin.
    [[nodiscard]] static QPainterPath bezier(
        std::span<const ZOLAppMarkCommand> commands, double scale, QPointF origin);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    ZOLAppMark mark_;
    double size_;
    std::function<void()> onClick_;
};

} // namespace ostrel
