// SPDX-License-Identifier: Apache-2.0
#include "panel/BodyScreen.h"

namespace ostrel {

BodyChoice chooseBody(
    OstrelMode mode, const std::optional<OstrelData>& lastData, std::string_view backendLastSource)
{
    if (mode == OstrelMode::automations)
        return { BodyScreen::tab, "every scheduler on this Mac and the server, one list" };
    if (mode == OstrelMode::server || mode == OstrelMode::settings)
        return { BodyScreen::tab, {} };
    const bool failed = backendLastSource == "error";
    if (!lastData)
        return failed ? BodyChoice { BodyScreen::error, "collector unavailable · retry below" }
                      : BodyChoice { BodyScreen::loading, "native monitor active · waiting for details" };
    if (lastData->ts.empty())
        return { BodyScreen::empty, "No detailed snapshot available" };
    if (failed)
        return { BodyScreen::stale, "Snapshot stale · collector unavailable" };
    return { BodyScreen::tab, {} };
}

} // namespace ostrel
