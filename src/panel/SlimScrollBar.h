// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

#include <optional>

class QScrollArea;

namespace ostrel {

/// Shows how far an area is scrolled, in the margin beside it, so that the content keeps its full width; it
/// can be dragged. There is nothing to see while all of the content fits. Main thread.
class SlimScrollBar final : public QWidget {
public:
    static constexpr int thickness = 10; ///< of what can be pressed, in points

    /// Stands at the right of the area, in the same parent.
    explicit SlimScrollBar(QScrollArea& area);

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    struct Thumb {
        double top = 0;
        double length = 0;
    };

    void follow();
    [[nodiscard]] Thumb thumb() const;

    QScrollArea& area_;
    std::optional<double> grip_; ///< while it is dragged: the pointer's distance from the thumb's top
    bool hovering_ = false;
};

} // namespace ostrel
