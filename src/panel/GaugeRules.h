// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace ostrel {

/// What a gauge draws and how it moves, in numbers.
namespace GaugeRules {

inline constexpr double defaultDiameter = 84;
inline constexpr double ringWidth = 4;
/// Seconds that the ring takes to its new value, and between two pictures meanwhile.
inline constexpr double duration = 0.42;
inline constexpr double frame = 1.0 / 60;

/// A percentage as a gauge can show it: 0 to 100, and 0 for what isn't a number.
[[nodiscard]] double shown(double pct);

/// Slow at both ends; 0 to 1 over 0 to 1.
[[nodiscard]] double easeInOut(double t);

/// The mark that tells a level ("normal", "warn", "crit") without colour, with a blank behind it; empty
/// where none is wanted.
[[nodiscard]] std::string_view levelMark(std::string_view level, bool differentiateWithoutColor);

/// The text in the ring.
[[nodiscard]] std::string valueText(std::string_view mark, double pct);

/// How far the arc reaches clockwise from the top, in degrees; 0 where there is nothing to see.
[[nodiscard]] double sweep(double pct);

/// Where a gauge's parts lie in its square, in points with y growing downward.
struct Geometry {
    double centre = 0; ///< x and y
    double radius = 0; ///< of the middle of the ring
    double valueBottom = 0; ///< lower edge of the value's line of text
    double captionBottom = 0;
};
[[nodiscard]] Geometry geometry(double diameter);

} // namespace GaugeRules

/// The value of a gauge on its way to a new one.
class GaugeMotion {
public:
    /// Puts the value somewhere, at rest.
    void stand(double pct);
    /// Sets out from where the value is. False when it is there at once: for too small a way, or when
    /// `moves` is false.
    bool setOut(double to, bool moves);
    /// One picture later; false once the value has arrived.
    bool step();
    /// Is there at once.
    void arrive();

    [[nodiscard]] bool moving() const { return progress_ < 1; }
    [[nodiscard]] double displayed() const { return displayed_; }
    [[nodiscard]] double target() const { return to_; }

private:
    double displayed_ = 0;
    double from_ = 0;
    double to_ = 0;
    double progress_ = 1;
};

} // namespace ostrel
