// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The strip of bars of a percentage per tick: where the bars stand, in points, and what it says.
namespace ostrel::Sparkline {

inline constexpr std::string_view noSamples = "no history yet";
inline constexpr double barAlpha = 0.5;

/// A bar on the bottom edge.
struct Bar {
    double x = 0;
    double width = 0;
    double height = 0;
    double cap = 0; ///< how much of its top is told apart where colour alone mustn't tell; 0 for none

    bool operator==(const Bar&) const = default;
};

/// One bar a sample, oldest first; a sample beyond 0 to 100 gives a bar at the limit. Of more samples than
/// the width can show, the lowest and highest bars.
[[nodiscard]] std::vector<Bar> bars(std::span<const int> samples, double width, double height);

/// The sample under an x, the one at the end beyond it; nothing with no samples or no width.
[[nodiscard]] std::optional<std::size_t> indexAt(double x, std::size_t count, double width);

/// What the strip says under the pointer: the value and its age in samples. Empty where there is none.
[[nodiscard]] std::string hoverText(
    std::string_view caption, std::span<const int> samples, double x, double width);

/// What is read to people who don't see the strip, of the samples as they are; empty with no samples.
[[nodiscard]] std::string accessibilityValue(std::span<const int> samples);

} // namespace ostrel::Sparkline
