// SPDX-License-Identifier: Apache-2.0
#include "panel/SystemTab.h"

#include "bar/BarTitle.h"
#include "design/OstrelStyle.h"
#include "design/Utf8.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "history/SparklineHoverView.h"
#include "panel/GaugeView.h"
#include "panel/PanelSize.h"
#include "panel/ReadoutText.h"
#include "panel/SourcedViews.h"
#include "panel/SystemText.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace ostrel {

namespace {

constexpr int sparklineHeight = 56;
constexpr int gaugesHeight = 92;
constexpr int gaugesInset = 20;

/// Stacks the rows of the tab.
class Stack {
public:
    Stack(QVBoxLayout& body, const PanelState& state, const MotionServices& motion, LiveRegistry& live)
        : body_(body)
        , state_(state)
        , motion_(motion)
        , live_(live)
    {
    }

    void operator()(const SystemItem::Gap& gap) const { body_.addSpacing(gap.height); }

    void operator()(const SystemItem::Section& row) const
    {
        body_.addWidget(section(utf16(row.title), contentWidth));
    }

    void operator()(const SourcedRow& row) const { body_.addWidget(sourcedRow(row)); }

    void operator()(const SystemItem::Pair& row) const
    {
        body_.addWidget(kvRow(utf16(row.label), utf16(row.value), contentWidth));
    }

    void operator()(const SourceLine& line) const { body_.addWidget(sourceView(line, contentWidth)); }

    void operator()(const SystemItem::Free& row) const
    {
        auto* label = fixedLabel(utf16(row.text), 14, QFont::DemiBold, freeColor(row.level), contentWidth);
        live_.add("free", label);
        body_.addWidget(label);
    }

    void operator()(const SystemItem::Note& note) const
    {
        body_.addWidget(wrappingLabel(utf16(note.text), 10, QFont::Normal, OstrelStyle::muted, contentWidth));
    }

    void operator()(const SystemItem::Sparkline& row) const
    {
        const auto& record = state_.tick.cpuHistory();
        body_.addWidget(makeSparkline(std::vector<int>(record.begin(), record.end()), contentWidth,
            sparklineHeight, std::string(row.caption), motion_.workspace));
    }

    void operator()(const SystemItem::Gauges&) const
    {
        auto* block = new QWidget;
        block->setFixedSize(contentWidth, gaugesHeight);
        auto* across = new QHBoxLayout(block);
        across->setContentsMargins(gaugesInset, 0, gaugesInset, 0);
        for (const char* key : { "cpu", "memory", "swap" }) {
            if (across->count() > 0)
                across->addStretch(1);
            auto* gauge = new GaugeView(GaugeRules::defaultDiameter, motion_);
            live_.add(key, gauge);
            across->addWidget(gauge);
        }
        body_.addWidget(block);
    }

    void operator()(const SystemItem::Model& model) const
    {
        auto* box = new PanelBox(contentWidth);
        const int width = box->contentWidth();
        box->add(fixedLabel(utf16(model.title), 8, QFont::DemiBold, OstrelStyle::muted, width));
        box->add(wrappingLabel(utf16(model.readings), 10.5, QFont::Normal, OstrelStyle::ink, width));
        box->add(wrappingLabel(utf16(model.meaning), 10.5, QFont::Normal, OstrelStyle::muted, width));
        body_.addWidget(box);
    }

private:
    static ThemedColor freeColor(std::string_view level)
    {
        if (level == "crit")
            return OstrelStyle::redBright;
        return level == "warn" ? OstrelStyle::amber : OstrelStyle::ink;
    }

    QVBoxLayout& body_;
    const PanelState& state_;
    const MotionServices& motion_;
    LiveRegistry& live_;
};

std::string presentBarTitle(const PanelState& state, const NativeStats& native, const OstrelData& data)
{
    return barTitle(state.settings.barDisplayMode, state.settings.barParts,
        { .stats = native, .cpu = state.tick.lastCPU(), .mcp = fanCount(data, "mcp"), .source = {} });
}

SystemFacts factsOf(const PanelState& state, const OstrelData& data, const platform::ProcessInfo& machine,
    const platform::Workspace& workspace)
{
    const NativeStats native = state.tick.native();
    return { .machine = { .system = machine.operatingSystemVersionString(),
                 .uptime = machine.systemUptime(),
                 .thermal = machine.thermalState(),
                 .lowPower = machine.isLowPowerModeEnabled() },
        .native = native,
        .nativeInterval = state.tick.nativeInterval(),
        .panelInterval = state.tick.panelInterval(),
        .samples = state.tick.cpuHistory().size(),
        .snapshotAge = state.snapshots.snapshotAgeText(),
        .snapshotStale = state.snapshots.snapshotIsStale(),
        .backendSource = state.snapshots.backendLastSource(),
        .backendState = state.snapshots.backendState(),
        .barParts = state.settings.barParts,
        .barTitle = presentBarTitle(state, native, data),
        .historyFilePath = state.historyFilePath,
        .differentiateWithoutColor = workspace.accessibilityDisplayShouldDifferentiateWithoutColor() };
}

} // namespace

void renderSystem(QVBoxLayout& body, const OstrelData& data, const PanelState& state,
    const platform::ProcessInfo& machine, const MotionServices& motion, LiveRegistry& live)
{
    const Stack stack(body, state, motion, live);
    for (const SystemRow& row :
        systemText(factsOf(state, data, machine, motion.workspace), data, state.history))
        std::visit(stack, row);
}

} // namespace ostrel
