// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>

/// The timing of every figure: seconds, points.
namespace ostrel::ZOLVoxelMotion {

struct Steps {
    int min;
    int max;
};

inline constexpr double assemble = 0.7; ///< the appear run
inline constexpr double scatter = 0.25; ///< the click run's first stage
inline constexpr double reassemble = 0.55; ///< its second stage
inline constexpr double hover = 0.16; ///< for the lift to go from nothing to all
inline constexpr double hoverLift = 2; ///< points that a figure rises
inline constexpr Steps steps { 6, 8 }; ///< depth bands that move together
inline constexpr double tick = 0.0625; ///< the clock's step; sixteen frames a second are enough for cubes

/// How far the cubes of a band have come, 0 (away) to 1 (home), `p` seconds into a run of `total`. Each band
/// flies for 43 % of the run, and the bands start evenly spread.
[[nodiscard]] constexpr double assembleProgress(double p, double total, double band)
{
    const double window = total * 0.43;
    const double start = band * (total - window);
    const double t = std::clamp((p - start) / window, 0.0, 1.0);
    return 1 - (1 - t) * (1 - t) * (1 - t);
}

} // namespace ostrel::ZOLVoxelMotion
