// SPDX-License-Identifier: Apache-2.0
/// Any file gives points in order, and what is saved reads back the same.
#include "history/OstrelHistory.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using ostrel::OstrelHistory;
    OstrelHistory history;
    history.points = OstrelHistory::parse(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!std::ranges::is_sorted(history.points, {}, &OstrelHistory::Point::minute))
        std::abort();
    const std::string saved = history.serialized();
    OstrelHistory again;
    again.points = OstrelHistory::parse(saved);
    if (again.points.size() != history.points.size() || again.serialized() != saved)
        std::abort();
    if (!history.points.empty())
        history.prune(history.points.back().minute);
    (void)history.liveBoundary(120);
    (void)ostrel::historyCaption(history, 120);
    return 0;
}
