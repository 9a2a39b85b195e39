// SPDX-License-Identifier: Apache-2.0
#include "automations/AgentBudgetView.h"

#include "automations/AutomationsTab.h"
#include "automations/AutomationsViews.h"
#include "design/Accessibility.h"
#include "design/Appearance.h"
#include "design/Paint.h"
#include "design/Utf8.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"

#include <QPainter>
#include <QVBoxLayout>
#include <QWidget>

namespace ostrel {

namespace {

constexpr int spacing = 8;
constexpr int levelHeight = 6;
constexpr double levelRadius = 3;

/// How much is left of a window, as a bar whose colour never changes.
class LevelBar final : public QWidget {
public:
    LevelBar(double level, const QString& label, int width)
        : level_(level)
    {
        setFixedSize(width, levelHeight);
        setAccessibleRole(*this, QAccessible::ProgressBar);
        setAccessibleName(label);
        setAccessibleLevel(*this, level, label);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        const auto mode = appearanceOf(*this);
        QRectF bar(rect());
        fillRounded(painter, bar, levelRadius, OstrelStyle::hair.in(mode));
        bar.setWidth(bar.width() * level_ / 100);
        if (bar.width() > 0)
            fillRounded(painter, snapped(painter, bar), levelRadius, OstrelStyle::ink.in(mode));
    }

private:
    double level_; ///< 0…100
};

void addWindow(QVBoxLayout& body, const AgentBudget::Window& window, int width)
{
    auto* line = fixedLabel(utf16(window.line), 12, QFont::Medium, OstrelStyle::ink, width);
    line->setToolTip(plainToolTip(utf16(window.toolTip)));
    body.addWidget(line);
    body.addSpacing(spacing);
    if (window.level) {
        body.addWidget(new LevelBar(*window.level, utf16(window.levelLabel), width));
        body.addSpacing(spacing);
    }
    addText(body, window.detail, width, { .size = 10 });
    body.addSpacing(spacing);
}

} // namespace

void renderAgentBudget(QVBoxLayout& body, AutomationsTab& tab, int width)
{
    const AgentBudget budget = tab.agentOverview();
    addText(body, budget.title, width, { .weight = QFont::DemiBold });
    body.addSpacing(spacing);
    for (const AgentBudget::Window& window : budget.windows)
        addWindow(body, window, width);
    if (!budget.notRead.empty()) {
        addText(body, budget.notRead, width);
        body.addSpacing(spacing);
    }
    addText(body, budget.claude, width, { .size = 10 });
    body.addSpacing(spacing);
    addText(body, budget.schedules, width, { .color = OstrelStyle::ink, .weight = QFont::Medium });
}

} // namespace ostrel
