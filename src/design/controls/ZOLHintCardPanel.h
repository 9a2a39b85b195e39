// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Geometry.h"

#include <QPoint>
#include <QRect>
#include <QVariantAnimation>
#include <QWidget>

#include <optional>

namespace ostrel {

class ZOLHintCard;

/// Where the toolkit puts a window's upper left corner: its y grows downward through all screens, while the
/// frame's grows upward from the lower left corner of the primary one.
[[nodiscard]] QPoint topLeftOf(const platform::Rect& frame, const QRect& primaryScreen);

/// The window of a hint card: without a frame, above all others, as large as the card, with round corners. It
/// leaves the keyboard where it is until somebody presses into it. Main thread.
class ZOLHintCardPanel final : public QWidget {
public:
    /// The card becomes its child.
    explicit ZOLHintCardPanel(ZOLHintCard& card);

    /// Null once the card was destroyed.
    [[nodiscard]] ZOLHintCard* contentView() const;

    /// Puts its lower left corner there, in global points with y upward.
    void setFrameOrigin(const platform::Point& point);
    /// Shows it above all others, without the keyboard.
    void orderFrontRegardless();

    /// Sinks it by `shift` points, invisible, so that it can rise.
    void sink(double shift);
    /// Lets it rise from there to its place and become visible, in `seconds`.
    void rise(double seconds, double shift);
    /// At its place and wholly visible at once.
    void settle();

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void setProgress(double progress);
    void takeKeyboard();

    std::optional<QPoint> place_; ///< of the upper left corner once it has risen; none while it isn't sunk
    double shift_ = 0;
    QVariantAnimation rise_ { this };
};

} // namespace ostrel
