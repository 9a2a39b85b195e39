// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/controls/FloatingPanel.h"
#include "platform/Geometry.h"

#include <QPoint>
#include <QVariantAnimation>

#include <functional>
#include <optional>
#include <utility>

namespace ostrel {

class ZOLHintCard;

/// The window of a hint card. It leaves the keyboard where it is until somebody presses into it, and can rise
/// into its place. Main thread.
class ZOLHintCardPanel final : public FloatingPanel {
public:
    /// The card becomes its child.
    explicit ZOLHintCardPanel(ZOLHintCard& card);

    /// Null once the card was destroyed.
    [[nodiscard]] ZOLHintCard* contentView() const;

    void setFrameOrigin(const platform::Point& point) override;
    /// How the window asks for the keyboard when it is pressed; by the toolkit's own way unless told.
    void setActivation(std::function<void()> activate) { activate_ = std::move(activate); }

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

private:
    void setProgress(double progress);
    void takeKeyboard();

    std::optional<QPoint> place_; ///< of the upper left corner once it has risen; none while it isn't sunk
    std::function<void()> activate_ = [this] { activateWindow(); };
    double shift_ = 0;
    QVariantAnimation rise_ { this };
};

} // namespace ostrel
