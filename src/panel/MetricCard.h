// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "panel/DashboardText.h"

#include <QRectF>
#include <QWidget>

#include <span>

namespace ostrel {

class LiveRegistry;

/// A filled plate with one reading: what it is, its value, a detail. Its place may lie between whole points;
/// the plate is drawn there to the device pixel. Its size doesn't follow its texts. Main thread.
class MetricCard final : public QWidget {
public:
    /// Registers the labels that the tick keeps up to date.
    MetricCard(const MetricText& text, double width, LiveRegistry& live, QWidget* parent = nullptr);

    /// Puts the plate's left edge there, in points of the view around it.
    void placeAt(double left);
    /// The plate, in points of the view around it.
    [[nodiscard]] QRectF plate() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double width_;
    double left_ = 0;
};

/// A row of cards of one width that fills `width`.
[[nodiscard]] QWidget* metricCards(std::span<const MetricText> texts, int width, LiveRegistry& live);

} // namespace ostrel
