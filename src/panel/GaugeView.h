// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/MotionServices.h"
#include "design/ThemedColor.h"
#include "design/ViewVisibility.h"
#include "panel/GaugeRules.h"

#include <QWidget>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// A ring that shows a percentage, its caption inside, square and of fixed size. It moves to a new value
/// while it can be seen, and is there at once where the user wants less movement. Main thread.
class GaugeView final : public QWidget {
public:
    /// `diameter` in points.
    GaugeView(double diameter, const MotionServices& services);
    ~GaugeView() override;

    /// Shows `pct`, moving there from `from`; without one it stands there. `level` is "normal", "warn" or
    /// "crit". A percentage beyond 0 to 100 is shown at the limit.
    void update(double pct, const std::string& caption, const ThemedColor& color, std::optional<double> from,
        std::string_view level);

    /// The value now drawn.
    [[nodiscard]] double displayedPct() const { return motion_.displayed(); }
    [[nodiscard]] const std::string& caption() const { return look_.caption; }
    [[nodiscard]] const std::string& levelMark() const { return look_.mark; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    /// All that a picture depends on beside the theme.
    struct Look {
        double pct = 0;
        std::string caption;
        std::string mark;
        ThemedColor color;

        bool operator==(const Look&) const = default;
    };

    [[nodiscard]] bool mayMove() const;
    void displayOptionsChanged();
    void resume();
    void fire();
    void showLook(Look look);

    double diameter_;
    MotionServices services_;
    ViewVisibility visibility_;
    std::unique_ptr<platform::Observation> displayOptions_;
    std::unique_ptr<platform::Timer> animTimer_;
    GaugeMotion motion_;
    std::string level_ = "normal";
    Look look_;
};

} // namespace ostrel
