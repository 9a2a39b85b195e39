// SPDX-License-Identifier: Apache-2.0
#include "panel/WorkloadsTab.h"

#include "design/OstrelStyle.h"
#include "design/Utf8.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "panel/PanelSize.h"
#include "panel/ProcessList.h"
#include "panel/WorkloadsText.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr int filterWidth = 108;
constexpr int filterSpacing = 8;

void addFilters(QVBoxLayout& body, Workloads& workloads)
{
    auto* across = new QHBoxLayout;
    across->setSpacing(filterSpacing);
    for (const ProcessFilter& filter : processFilters) {
        auto* button = new OstrelButton(utf16(filter.title), filterWidth,
            [&workloads, key = filter.key] { workloads.selectProcessFilter(key); });
        button->setObjectName(utf16(filter.key));
        button->setActive(workloads.processFilter() == filter.key);
        across->addWidget(ostrelTip(button, utf16(fmt::format("list processes {}", filter.title))));
    }
    across->addStretch(1);
    body.addLayout(across);
}

void addNote(QVBoxLayout& body, std::string_view text, double size)
{
    body.addWidget(wrappingLabel(utf16(text), size, QFont::Normal, OstrelStyle::muted, contentWidth));
}

} // namespace

void renderProcesses(QVBoxLayout& body, const OstrelData& data, Workloads& workloads)
{
    addFilters(body, workloads);
    body.addSpacing(12);
    body.addWidget(section("observed processes · CPU % may exceed 100 across cores · stop… previews one "
                           "process; protected sessions stay open",
        contentWidth));
    if (data.procs.empty()) {
        body.addSpacing(6);
        addNote(body, "no process data yet – refreshing…", 10);
        return body.addSpacing(8);
    }
    std::vector<OstrelData::Proc> shown;
    for (const std::size_t at : filteredProcesses(data.procs, workloads.processFilter(), workloads.rules()))
        shown.push_back(data.procs[at]);
    if (shown.empty())
        addNote(body, "No matches in the current top-process snapshot.", 11);
    else
        body.addWidget(new ProcessList(std::move(shown), workloads));
    body.addSpacing(8);
}

} // namespace ostrel
