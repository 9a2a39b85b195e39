// SPDX-License-Identifier: Apache-2.0
#include "panel/MaintenanceSection.h"

#include "design/OstrelStyle.h"
#include "design/Utf8.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "panel/InsightsText.h"
#include "panel/LineBox.h"
#include "panel/PanelSize.h"

#include <QVBoxLayout>

#include <string>

namespace ostrel {

namespace {

constexpr int buttonHeight = 30;

void addPressure(QVBoxLayout& body, const OstrelData& data)
{
    const LineBox box(body);
    box.title("PRESSURE READ");
    const PressureRead pressure = pressureRead(data);
    box.add(
        pressure.text, 11, pressure.alarming ? OstrelStyle::redBright : OstrelStyle::ink, QFont::DemiBold);
    box.add(hotNow(data), 10.5, OstrelStyle::ink);
    box.add("Resident swap is historical allocation. This tool never purges swap or closes sessions.", 10,
        OstrelStyle::muted);
}

void addOrder(QVBoxLayout& body, const OstrelData& data, std::string_view backendLastSource)
{
    const LineBox box(body);
    box.title("ORDER");
    box.add(
        "MCP audit reports candidates without terminating them. History compaction keeps 120 samples with a "
        "full backup. It does not free RAM.",
        10.5, OstrelStyle::ink);
    box.add(maintenanceOrder(data, backendLastSource), 10.5, OstrelStyle::muted);
}

void press(Maintenance& maintenance, std::string_view key)
{
    if (key == Maintenance::auditKey)
        maintenance.runClean();
    else if (key == Maintenance::previewKey)
        maintenance.trimLogs();
    else
        maintenance.deepClean();
}

void addButtons(QVBoxLayout& body, Maintenance& maintenance)
{
    for (const MaintenanceButton& words : maintenanceButtons(maintenance.cleanupRunning())) {
        auto* button = new OstrelButton(
            utf16(words.title), contentWidth, [&maintenance, key = words.key] { press(maintenance, key); },
            buttonHeight);
        ostrelTip(button, utf16(words.tooltip));
        button->setActive(words.running);
        button->setEnabled(!words.running);
        body.addWidget(button);
        body.addSpacing(6);
    }
}

void addLastResult(QVBoxLayout& body, std::string_view result)
{
    if (result.empty())
        return;
    body.addSpacing(4);
    const LineBox box(body);
    box.title("LAST RESULT");
    box.add(result, 11, OstrelStyle::ink, QFont::DemiBold);
    body.addSpacing(6);
}

} // namespace

void renderCleanup(
    QVBoxLayout& body, const OstrelData& data, std::string_view backendLastSource, Maintenance& maintenance)
{
    body.addWidget(section("cleanup · audit first · owned data only", contentWidth));
    body.addSpacing(6);
    addPressure(body, data);
    body.addSpacing(8);
    addOrder(body, data, backendLastSource);
    body.addSpacing(10);
    addButtons(body, maintenance);
    addLastResult(body, maintenance.cleanupLastResult());
    body.addWidget(section("report · what changed", contentWidth));
    const LineBox report(body);
    for (const std::string& line : reportLines(maintenance.cleanupReport()))
        report.add(line, 10.5, OstrelStyle::ink);
    body.addSpacing(8);
}

} // namespace ostrel
