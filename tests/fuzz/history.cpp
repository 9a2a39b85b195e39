// SPDX-License-Identifier: Apache-2.0
/// Any file gives points in order, and what is saved reads back the same.
#include "history/OstrelHistory.h"

#include "fuzz/FuzzTarget.h"

#include <algorithm>

using namespace ostrel;

void runOn(std::string_view text)
{
    OstrelHistory history;
    history.points = OstrelHistory::parse(text);
    check(std::ranges::is_sorted(history.points, {}, &OstrelHistory::Point::minute));
    const std::string saved = history.serialized();
    OstrelHistory again;
    again.points = OstrelHistory::parse(saved);
    check(again.points.size() == history.points.size() && again.serialized() == saved);
    if (!history.points.empty())
        history.prune(history.points.back().minute);
    (void)history.liveBoundary(120);
    (void)historyCaption(history, 120);
}
