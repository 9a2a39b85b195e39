// SPDX-License-Identifier: Apache-2.0
#include "janitor/CleanupView.h"

#include "design/Utf8.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "janitor/JanitorTab.h"
#include "janitor/JanitorViews.h"

#include <array>
#include <cstddef>
#include <string>

namespace ostrel {

namespace {

constexpr int depthHeight = 44;
constexpr int depthSpacing = 8;

/// The lines of a listing, each on one line.
void addListed(const JanitorColumn& column, const std::vector<std::string>& lines)
{
    for (const std::string& line : lines)
        column.text(line, 10, OstrelStyle::muted, 1);
}

void pressDepth(JanitorTab& janitor, std::string_view key, std::size_t depth)
{
    if (key == "agents")
        janitor.pressFiles(std::string(agentGroups[depth]));
    else
        janitor.pressProcesses(std::string(depths[depth]));
}

void addTarget(const JanitorColumn& column, const TargetRow& target, JanitorTab& janitor)
{
    column.text(target.title, 12, OstrelStyle::ink, 1, QFont::DemiBold);
    column.gap(6);
    std::array<QWidget*, depths.size()> buttons {};
    for (std::size_t at = 0; at < buttons.size(); ++at) {
        JanitorButton words = target.buttons[at];
        words.width = (column.width() - depthSpacing) / 2;
        buttons[at] = janitorButton(
            words, [&janitor, key = target.key, at] { pressDepth(janitor, key, at); }, depthHeight);
    }
    column.add(viewRow({ buttons[0], buttons[1] }, column.width(), depthSpacing));
    column.gap(6);
    for (const std::string_view note : target.notes)
        column.text(note, 10, OstrelStyle::muted, 2);
    for (const ListedLines& listed : target.listed) {
        column.gap(6);
        column.text(listed.title, 10.5, OstrelStyle::ink, 1, QFont::DemiBold);
        addListed(column, listed.lines);
    }
    column.rule();
}

void addGroup(const JanitorColumn& column, const GroupRow& group, JanitorTab& janitor)
{
    auto* title = elidedLabel(utf16(group.title), 11.5, QFont::Medium, OstrelStyle::ink);
    auto* amount = lineLabel(utf16(group.amount), 11, QFont::DemiBold, OstrelStyle::ink);
    OstrelButton* clean
        = janitorButton(group.clean, [&janitor, name = group.group] { janitor.pressFiles(name); });
    column.add(namedRow(group.title, { title, amount, clean }, column.width()));
    if (!group.selected.empty() || !group.error.empty() || !group.lines.empty())
        column.gap(4);
    column.text(group.selected, 10, OstrelStyle::muted, 2);
    column.text(group.error, 10, OstrelStyle::red, 2);
    addListed(column, group.lines);
    column.rule();
}

void addReceipts(const JanitorColumn& column, const CleanupBody& body, JanitorTab& janitor)
{
    column.text(body.receiptsTitle, 11, OstrelStyle::ink, 1, QFont::Medium);
    column.gap(4);
    for (const std::string& line : body.receipts)
        column.text(line, 10.5, OstrelStyle::muted, 2);
    column.gap(8);
    column.addNarrow(janitorButton(body.openReceipts, [&janitor] { janitor.openReceipts(); }));
    column.gap(8);
}

} // namespace

QWidget* cleanupView(JanitorTab& janitor, int width)
{
    const CleanupBody body = janitor.cleanupBody();
    const JanitorColumn column(width);
    column.add(viewRow({ lineLabel(utf16(body.title), 13, QFont::DemiBold, OstrelStyle::ink), nullptr,
                           lineLabel(utf16(body.hint), 10.5, QFont::Normal, OstrelStyle::muted) },
        width));
    column.status(body.status, body.lastAction);
    column.rule();
    for (const TargetRow& target : body.targets)
        addTarget(column, target, janitor);
    if (!body.groups.empty()) {
        column.text(body.groupsTitle, 11, OstrelStyle::ink, 1, QFont::Medium);
        column.gap(8);
    }
    for (const GroupRow& group : body.groups)
        addGroup(column, group, janitor);
    addReceipts(column, body, janitor);
    return column.view();
}

} // namespace ostrel
