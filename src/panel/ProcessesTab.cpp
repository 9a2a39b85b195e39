// SPDX-License-Identifier: Apache-2.0
#include "panel/ProcessesTab.h"

#include "core/Text.h"
#include "design/OstrelStyle.h"
#include "design/Utf8.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"

#include <QGridLayout>
#include <QVBoxLayout>

#include <algorithm>
#include <cstddef>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr std::size_t mostRows = 24;

enum Column { memory, cpu, pid, name, command };

QWidget* cell(const QString& text, bool strong, Qt::Alignment alignment)
{
    auto* label = lineLabel(
        text, 11, strong ? QFont::DemiBold : QFont::Normal, strong ? OstrelStyle::ink : OstrelStyle::muted);
    label->setAlignment(alignment | Qt::AlignVCenter);
    return label;
}

void addHeading(QGridLayout& grid)
{
    grid.addWidget(cell("memory", false, Qt::AlignRight), 0, memory);
    grid.addWidget(cell("cpu", false, Qt::AlignRight), 0, cpu);
    grid.addWidget(cell("pid", false, Qt::AlignRight), 0, pid);
    grid.addWidget(cell("process", false, Qt::AlignLeft), 0, name);
    grid.addWidget(cell("command", false, Qt::AlignLeft), 0, command);
}

void addRow(QGridLayout& grid, int row, const OstrelData::Proc& proc)
{
    grid.addWidget(cell(utf16(memLabel(proc.rss)), true, Qt::AlignRight), row, memory);
    grid.addWidget(cell(utf16(fmt::format("{:.1f}%", proc.cpu)), false, Qt::AlignRight), row, cpu);
    grid.addWidget(cell(utf16(proc.pid), false, Qt::AlignRight), row, pid);
    grid.addWidget(elidedLabel(utf16(proc.name), 11, QFont::DemiBold, OstrelStyle::ink), row, name);
    grid.addWidget(elidedLabel(utf16(proc.cmd), 11, QFont::Normal, OstrelStyle::muted), row, command);
}

} // namespace

void renderProcesses(QVBoxLayout& body, const OstrelData& data)
{
    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(14);
    grid->setVerticalSpacing(5);
    grid->setColumnMinimumWidth(name, 130);
    grid->setColumnStretch(command, 1);
    addHeading(*grid);
    const std::size_t rows = std::min(mostRows, data.procs.size());
    for (std::size_t at = 0; at < rows; ++at)
        addRow(*grid, static_cast<int>(at) + 1, data.procs[at]);
    body.addLayout(grid);
    const std::string note = fmt::format("{} of {} processes in the snapshot", rows, data.procs.size());
    body.addSpacing(8);
    body.addWidget(wrappingLabel(utf16(note), 11, QFont::Normal, OstrelStyle::muted));
}

} // namespace ostrel
