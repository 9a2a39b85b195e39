// SPDX-License-Identifier: Apache-2.0
#include "panel/GraphSeries.h"

namespace ostrel {

GraphSeries graphSeries(const OstrelHistory& history, std::int64_t OstrelHistory::Point::*percentage)
{
    const auto points = history.window(historyWindowMinutes);
    GraphSeries series;
    series.values.reserve(points.size());
    series.minutes.reserve(points.size());
    for (const OstrelHistory::Point& point : points) {
        series.values.push_back(static_cast<double>(point.*percentage));
        series.minutes.push_back(point.minute);
    }
    series.boundary = history.liveBoundary(historyWindowMinutes);
    return series;
}

} // namespace ostrel
