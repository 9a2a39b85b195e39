// SPDX-License-Identifier: Apache-2.0
#include "panel/ProcessesTab.h"

#include "core/Text.h"
#include "design/ElidedLabel.h"
#include "design/TabLayout.h"
#include "design/Utf8.h"

#include <QGridLayout>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>
#include <cstddef>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr std::size_t mostRows = 24;

enum Column { memory, cpu, pid, name, command };

QLabel* cell(const QString& text, const OstrelStyle& style, bool strong, Qt::Alignment alignment)
{
    auto* label = lineLabel(text, OstrelStyle::mono(11, strong ? QFont::DemiBold : QFont::Normal),
        strong ? style.ink : style.muted);
    label->setAlignment(alignment | Qt::AlignVCenter);
    return label;
}

void addHeading(QGridLayout& grid, const OstrelStyle& style)
{
    grid.addWidget(cell("memory", style, false, Qt::AlignRight), 0, memory);
    grid.addWidget(cell("cpu", style, false, Qt::AlignRight), 0, cpu);
    grid.addWidget(cell("pid", style, false, Qt::AlignRight), 0, pid);
    grid.addWidget(cell("process", style, false, Qt::AlignLeft), 0, name);
    grid.addWidget(cell("command", style, false, Qt::AlignLeft), 0, command);
}

void addRow(QGridLayout& grid, int row, const OstrelData::Proc& proc, const OstrelStyle& style)
{
    grid.addWidget(cell(utf16(memLabel(proc.rss)), style, true, Qt::AlignRight), row, memory);
    grid.addWidget(cell(utf16(fmt::format("{:.1f}%", proc.cpu)), style, false, Qt::AlignRight), row, cpu);
    grid.addWidget(cell(utf16(proc.pid), style, false, Qt::AlignRight), row, pid);
    grid.addWidget(
        new ElidedLabel(utf16(proc.name), OstrelStyle::mono(11, QFont::DemiBold), style.ink), row, name);
    grid.addWidget(new ElidedLabel(utf16(proc.cmd), OstrelStyle::mono(11), style.muted), row, command);
}

} // namespace

void renderProcesses(QVBoxLayout& body, const OstrelData& data, const OstrelStyle& style)
{
    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(14);
    grid->setVerticalSpacing(5);
    grid->setColumnMinimumWidth(name, 130);
    grid->setColumnStretch(command, 1);
    addHeading(*grid, style);
    const std::size_t rows = std::min(mostRows, data.procs.size());
    for (std::size_t at = 0; at < rows; ++at)
        addRow(*grid, static_cast<int>(at) + 1, data.procs[at], style);
    body.addLayout(grid);
    const std::string note = fmt::format("{} of {} processes in the snapshot", rows, data.procs.size());
    body.addSpacing(8);
    body.addWidget(wrappingLabel(utf16(note), OstrelStyle::mono(11), style.muted));
}

} // namespace ostrel
