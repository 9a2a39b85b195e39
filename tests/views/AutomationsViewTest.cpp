// SPDX-License-Identifier: Apache-2.0
#include "automations/AutomationsBench.h"
#include "views/OpenTab.h"

#include "design/controls/PanelField.h"
#include "design/voxel/AutomationVoxelView.h"

#include "support/Rendering.h"

#include <chrono>
#include <initializer_list>

namespace {

using namespace ostrel;

const json::Value lanes
    = json::Value::array({ { { "key", "launchd" }, { "title", "This Machine" }, { "count", 2 },
                               { "observed", true }, { "owner", "me" }, { "registry", "<b>cron</b>" } },
        { { "key", "systemd" }, { "title", "Server" }, { "note", "no alias" } } });

/// Two jobs on this machine, one of them hostile, and a quota that was read a minute ago.
std::string inventory()
{
    const auto seconds
        = std::chrono::duration_cast<std::chrono::seconds>(VirtualTime().now().time_since_epoch()).count();
    return inventoryJson(
        { jobJson("launchd", "one", { { "family", "bar" }, { "last_result", "failed · exit 3" } }),
            jobJson("launchd", "two",
                { { "title", "<b>two</b>\n&amp;" }, { "observation", "declared · unverified" },
                    { "can_run", false }, { "toggles", false } }) },
        { { "lanes", lanes }, { "alerts", { "cron is off" } },
            { "quotas",
                json::Value::array({ { { "host", "box" }, { "state", "observed" }, { "scope", "shared" },
                    { "checked_at", seconds - 60 },
                    { "windows",
                        json::Value::array({ { { "remaining", 25 }, { "minutes", 300 } } }) } } }) } });
}

struct OpenAutomations : OpenTab {
    explicit OpenAutomations(OstrelMode mode = OstrelMode::automations, const std::string& text = inventory())
        : OpenTab(OstrelMode::overview)
    {
        answer(text);
        delegate.automationsTab().refresh();
        work();
        delegate.frame().switchMode(mode);
        settle();
    }

    /// Presses a key where the keyboard is.
    void key(int key, const QString& text = {}) { sendKey(*keyboard(), key, Qt::NoModifier, text); }
};

TEST(AutomationsView, SaysWhatThereIsFromTheTopDown)
{
    OpenAutomations tab;
    tab.press("automation-open-launchd:two");
    const QStringList said { "2 entries · 1 enabled", "read 2026-11-25 08:00 · collected 2026-11-25 07:55",
        "△ cron is off", "2 matches · page 1/1", "launchds", "<b>two</b> &amp;", "box · daily", "unverified",
        "scheduler", "launchds · box", "schedule", "daily", "last run", "—", "result", "—", "next run", "—",
        "observation", "declared · unverified", "registry state", "", "location", "", "transfer", "", "owner",
        "", "registry", "", "runs as", "—", "recent runs", "no run details returned yet",
        "switched only in its own interface", "Job one", "box · daily", "failed · exit 3" };
    EXPECT_EQ(tab.said().join("\n").toStdString(), said.join("\n").toStdString());
}

TEST(AutomationsView, EveryControlIsReachedByTheKeyboardInTheOrderOfReading)
{
    OpenAutomations tab;
    tab.press("automation-open-launchd:one");
    QStringList order;
    const QWidget* view = &tab.page();
    for (const QWidget* next = view->nextInFocusChain(); next != view; next = next->nextInFocusChain())
        if (tab.page().isAncestorOf(next) && next->focusPolicy() & Qt::TabFocus && next->isEnabled())
            order.push_back(next->accessibleName());
    const QStringList expected { "refresh inventory", "all · 2", "this machine · 2", "server · –", "all",
        "enabled", "attention", "unverified", "Filter automations by name or host; press Return", "open",
        "hide", "run once", "disable", "transfer plan", "receipts" };
    EXPECT_EQ(order.join("\n").toStdString(), expected.join("\n").toStdString());
}

TEST(AutomationsView, AJobIsAGroupThatNamesItselfWithABadgeThatTellsItsState)
{
    OpenAutomations tab;
    const auto badges = all<AutomationVoxelView>(tab.page());
    ASSERT_EQ(badges.size(), 2U);
    EXPECT_EQ(badges[0]->accessibleName(), "codex app automation, unobserved");
    EXPECT_EQ(badges[1]->accessibleName(), "launchd automation, failed");
    QAccessibleInterface* group = QAccessible::queryAccessibleInterface(badges[1]->parentWidget());
    EXPECT_EQ(group->text(QAccessible::Name), "Job one, launchds, enabled");
    EXPECT_EQ(group->role(), QAccessible::Grouping);
    EXPECT_EQ(tab.named("lane-launchd").toolTip(), "<p>me · &lt;b&gt;cron&lt;/b&gt;</p>");
    EXPECT_EQ(tab.named("lane-systemd").toolTip(), "no alias");
}

TEST(AutomationsView, TheSearchFieldKeepsItsTextAndItsCursorAndFindsOnReturnAlone)
{
    OpenAutomations tab;
    tab.named("automations-search").setFocus();
    for (const char* letter : { "o", "n", "1" })
        tab.key(Qt::Key_unknown, letter);
    tab.key(Qt::Key_Left);
    tab.delegate.frame().renderBody();
    tab.settle();
    auto* field = dynamic_cast<PanelField*>(tab.keyboard());
    ASSERT_TRUE(field) << "the keyboard has left the field";
    EXPECT_EQ(field->text(), "on1");
    EXPECT_EQ(field->cursorPosition(), 2);
    EXPECT_TRUE(tab.said().contains("2 matches · page 1/1"));
    tab.key(Qt::Key_Delete);
    tab.key(Qt::Key_E, "e");
    tab.key(Qt::Key_Return);
    tab.settle();
    EXPECT_TRUE(tab.said().contains("1 matches · page 1/1"));
    EXPECT_EQ(tab.keyboard(), &tab.named("automations-search"));
    EXPECT_EQ(dynamic_cast<PanelField&>(*tab.keyboard()).text(), "one");
}

TEST(AutomationsView, APressKeepsTheKeyboardWhereItWasAndAsksInATurnOfItsOwn)
{
    OpenAutomations tab;
    tab.named("automation-open-launchd:one").setFocus();
    tab.press("automation-open-launchd:one");
    EXPECT_EQ(tab.keyboard(), &tab.named("automation-open-launchd:one"));
    EXPECT_EQ(tab.named("automation-open-launchd:one").accessibleName(), "hide");
    for (const auto& [identifier, op] :
        std::initializer_list<std::pair<const char*, const char*>> { { "automation-run-launchd:one", "run" },
            { "automation-toggle-launchd:one", "disable" }, { "automation-plan-launchd:one", "plan" } }) {
        tab.control(identifier)->click();
        const std::size_t before = tab.alerts.asked.size();
        tab.settle();
        ASSERT_EQ(tab.alerts.asked.size(), before + 1) << op;
        EXPECT_EQ(tab.alerts.asked.back().buttons[0], op);
        EXPECT_TRUE(tab.said().contains("cancelled · Job one"));
    }
    tab.press("automation-receipts-launchd:one");
    EXPECT_EQ(tab.workspace.opened.size(), 1U);
}

TEST(AutomationsView, ChipsFiltersAndThePagerDoWhatTheySay)
{
    std::vector<json::Value> rows;
    rows.reserve(10000);
    for (int at = 0; at < 10000; ++at)
        rows.push_back(
            jobJson(at % 2 ? "launchd" : "cloud", std::to_string(10000 + at), { { "active", at % 4 == 0 } }));
    OpenAutomations tab(OstrelMode::automations, inventoryJson(rows, { { "lanes", lanes } }));
    const auto said = [&] { return tab.said().filter("matches").join("").toStdString(); };
    for (const auto& [identifier, expected] : std::initializer_list<std::pair<const char*, const char*>> {
             { "automations-next", "10000 matches · page 2/834" },
             { "lane-launchd", "5000 matches · page 2/417" },
             { "automations-previous", "5000 matches · page 1/417" },
             { "state-enabled", "0 matches · page 1/1" },
             { "lane-", "2500 matches · page 1/209" },
             { "state-attention", "0 matches · page 1/1" },
             { "state-all", "10000 matches · page 1/834" },
         }) {
        tab.press(identifier);
        EXPECT_EQ(said(), expected) << identifier;
        EXPECT_LT(tab.page().findChildren<QWidget*>().size(), 200) << identifier;
    }
}

TEST(AutomationsView, TheBudgetStandsOnTheDashboardWithABarOfWhatIsLeft)
{
    OpenAutomations tab(OstrelMode::overview);
    tab.expectSaid({ "AGENT BUDGET · ACCOUNT QUOTA", "Codex · box · 300m · 25% remaining",
        "shared · 1m ago · reset —", "Claude quota · unavailable from connected sources",
        "SCHEDULES   Mac 2   →   server 0   ·   cloud 0 unverified" });
    const auto views = tab.page().findChildren<QWidget*>();
    const auto found = std::ranges::find(
        views, QString("Codex box · 25 percent quota remaining"), &QWidget::accessibleName);
    ASSERT_NE(found, views.end());
    QWidget& bar = **found;
    EXPECT_EQ(bar.size(), QSize(728, 6));
    const auto mode = appearanceOf(bar);
    for (const double scale : { 1.0, 2.0 }) {
        const QImage picture = rendered(bar, scale);
        const int middle = picture.height() / 2;
        const auto at = [&](double x) { return picture.pixel(static_cast<int>(x * scale), middle); };
        EXPECT_TRUE(near(at(178), OstrelStyle::ink.in(mode))) << scale;
        EXPECT_TRUE(near(at(185), OstrelStyle::hair.in(mode))) << scale;
    }
}

TEST(AutomationsView, TheSettingsTellOfEachLane)
{
    OpenAutomations tab(OstrelMode::settings);
    tab.expectSaid(
        { "automations", "the six schedulers are read on a press of refresh; the tab keeps no timer",
            "enable and disable go through a confirmation and leave a receipt", "This Machine — 2 · me",
            "Server — not reachable · no alias" });
    tab.press("automations-receipts");
    EXPECT_EQ(tab.workspace.opened.size(), 1U);
}

} // namespace
