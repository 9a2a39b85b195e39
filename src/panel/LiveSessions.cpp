// SPDX-License-Identifier: Apache-2.0
#include "panel/LiveSessions.h"

#include <algorithm>

namespace ostrel {

namespace {

constexpr std::size_t copyButton = 1;

} // namespace

LiveProcesses LiveSessions::processes(const OstrelData& data)
{
    sessionPage_ = std::min(sessionPage_, LiveProcesses::pages(data.liveSessions.size()) - 1);
    return liveProcesses(data, sessionPage_);
}

void LiveSessions::previousPage()
{
    if (sessionPage_ == 0)
        return;
    --sessionPage_;
    renderBody();
}

void LiveSessions::nextPage()
{
    ++sessionPage_;
    renderBody();
}

void LiveSessions::showDetails(const OstrelData::Proc& proc)
{
    // In a turn of its own: the control that asks may go meanwhile.
    services_.mainQueue.post(life_.guard([this, alert = detailsAlert(proc)] {
        if (services_.alerts.runModal(alert) == copyButton)
            services_.pasteboard.setText(alert.text);
    }));
}

void LiveSessions::renderBody()
{
    if (body_)
        body_->renderBody();
}

} // namespace ostrel
