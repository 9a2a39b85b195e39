// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/ThemedColor.h"
#include "platform/Geometry.h"

#include <QPoint>
#include <QRect>
#include <QWidget>

namespace ostrel {

/// Where the toolkit puts a window's upper left corner: its y grows downward through all screens, while the
/// frame's grows upward from the lower left corner of the primary one.
[[nodiscard]] QPoint topLeftOf(const platform::Rect& frame, const QRect& primaryScreen);

/// The window of a card: without a frame, above all others, as large as the card, with round corners. It
/// takes no keyboard, and assistive technology is told of it as of a message, once for each coming. Main
/// thread.
class FloatingPanel : public QWidget {
public:
    /// The card becomes its child. `edge` is what the corners have beyond the card's own smooth ones.
    FloatingPanel(QWidget& card, double radius, const ThemedColor& edge);

    /// Puts its lower left corner there, in global points with y upward.
    virtual void setFrameOrigin(const platform::Point& point);
    /// Shows it above all others, without the keyboard.
    void orderFrontRegardless();
    /// Of its corners, in points.
    [[nodiscard]] double radius() const { return radius_; }
    /// What the message is, for those who can't see it.
    void setMessage(const QString& title, const QString& fact);

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

    /// Null once the card was destroyed.
    [[nodiscard]] QWidget* card() const;

private:
    void fit(const QWidget& card);

    double radius_;
    ThemedColor edge_;
};

} // namespace ostrel
