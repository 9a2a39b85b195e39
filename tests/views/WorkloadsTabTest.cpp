// SPDX-License-Identifier: Apache-2.0
#include "views/OpenTab.h"

#include "design/controls/PanelMenu.h"
#include "panel/ProcessRowView.h"

#include <QContextMenuEvent>

#include <string_view>

namespace {

using namespace ostrel;

/// A snapshot of these rows.
std::string snapshotOf(const std::string& rows)
{
    return R"({"ts":"12:00:00","ram":{},"swap":{},"procs":[)" + rows + "]}";
}

struct OpenWorkloads : OpenTab {
    explicit OpenWorkloads(const std::string& snapshot)
        : OpenTab(OstrelMode::processes, snapshot)
    {
    }

    [[nodiscard]] std::vector<ProcessRowView*> rows() { return all<ProcessRowView>(page()); }
    [[nodiscard]] OstrelButton& stop(std::size_t row) { return *all<OstrelButton>(*rows().at(row)).at(0); }
    [[nodiscard]] PanelMenu* menu() { return dynamic_cast<PanelMenu*>(QApplication::activePopupWidget()); }
};

constexpr const char* two
    = R"({"rss":1536,"pid":"70","name":"node","grp":"runtime","cmd":"node <b>x</b>","cpu":40},
    {"rss":9,"pid":"71","name":"finder","grp":"app","cmd":"","cpu":15})";

TEST(WorkloadsTab, SaysWhatRunsAndStopsOnlyWhatMayBeStopped)
{
    OpenWorkloads tab(snapshotOf(two));
    EXPECT_EQ(tab.said(),
        (QStringList {
            "observed processes · CPU % may exceed 100 across cores · stop… previews one process; protected "
            "sessions stay open",
            "70", "node", "RUNTIME", "40%", "1.5 gb", "71", "finder", "PROT", "15%", "9 mb" }))
        << tab.said().join("\n").toStdString();
    const ProcessRowView& row = *tab.rows().at(0);
    EXPECT_EQ(row.size(), QSize(728, 44));
    EXPECT_EQ(row.toolTip(), "<p>node &lt;b&gt;x&lt;/b&gt;</p>") << "as it is, never as markup";
    const std::vector<ZOLShellLabel*> labels = all<ZOLShellLabel>(row);
    EXPECT_EQ(labels.at(1)->accessibleName(), "node – node <b>x</b>");
    EXPECT_EQ(labels.at(3)->palette().color(QPalette::WindowText), qColor(OstrelStyle::redBright.light));
    for (const ZOLShellLabel* label : labels)
        EXPECT_EQ(label->geometry().center().y(), 21) << label->text().toStdString();
    EXPECT_FALSE(tab.stop(1).isEnabled());
    tab.stop(0).click();
    tab.answer(R"({"allowed":[{"pid":70,"name":"node","cmd":"node x","rss_mb":9,"start":5}]})");
    tab.deliver();
    ASSERT_EQ(tab.alerts.asked.size(), 1U);
    EXPECT_EQ(tab.alerts.asked[0].title, "stop node · pid 70");
}

TEST(WorkloadsTab, FiltersAreButtonsAndAnEmptySnapshotWaitsUnderEachOfThem)
{
    const char* const none = "No matches in the current top-process snapshot.";
    const std::pair<const char*, const char*> cases[] { { "by memory", "node" }, { "by cpu", "node" },
        { "agent procs", none }, { "mcp procs", none }, { "can stop", "node" } };
    OpenWorkloads tab(snapshotOf(two)), empty(snapshotOf(""));
    for (const auto& [title, said] : cases) {
        tab.press(title);
        empty.press(title);
        EXPECT_EQ(tab.captions().filter("(on)"), QStringList { QString(title) + " (on)" });
        EXPECT_EQ(tab.control(title)->toolTip(), QString("list processes ") + title);
        EXPECT_TRUE(tab.said().contains(said)) << title;
        EXPECT_EQ(empty.said().last(), "no process data yet – refreshing…") << title;
    }
    EXPECT_FALSE(tab.said().contains("finder")) << "protected";
}

TEST(WorkloadsTab, ALongListIsMadeAsItIsScrolledAndTheKeyboardGoesDownItInOrder)
{
    OpenWorkloads tab(snapshotText(500));
    EXPECT_EQ(tab.page().height() / 44, 500 + 1) << "the filters and the heading take the height of a row";
    EXPECT_LT(tab.rows().size(), 30U);
    // Backwards, so that later rows are made before earlier ones.
    for (const int place : { tab.scrollBar().maximum(), tab.scrollBar().maximum() / 2, 0 }) {
        tab.scrollBar().setValue(place);
        const QWidget& viewport = *tab.page().parentWidget();
        for (int y = 90; y < viewport.height(); y += 44) {
            QWidget* there = tab.page().childAt(tab.page().mapFrom(&viewport, QPoint(20, y)));
            while (there && !dynamic_cast<ProcessRowView*>(there))
                there = there->parentWidget();
            EXPECT_TRUE(there) << place << " " << y;
        }
    }
    EXPECT_LT(tab.rows().size(), 90U);
    std::vector<int> tops;
    const QWidget* last = nullptr;
    for (QWidget* at = tab.page().nextInFocusChain(); at != &tab.page(); at = at->nextInFocusChain())
        if (auto* button = dynamic_cast<OstrelButton*>(at); button && button->width() == 96) {
            tops.push_back(button->mapTo(&tab.page(), QPoint()).y());
            last = button;
        }
    EXPECT_TRUE(std::ranges::is_sorted(tops));
    EXPECT_EQ(tops.size(), tab.rows().size());
    EXPECT_EQ(last->objectName(), "stop-599");
}

TEST(WorkloadsTab, TheKeyboardStaysOnItsProcessThoughTheListIsOrderedAnew)
{
    OpenWorkloads tab(snapshotText(40));
    tab.scrollBar().setValue(400);
    auto* chosen = tab.page().findChild<QWidget*>("stop-115");
    ASSERT_TRUE(chosen);
    chosen->setFocus();
    std::string rows = R"({"rss":9000,"pid":"9","name":"n","grp":"g","cmd":"n","cpu":1})";
    for (int n = 0; n < 40; ++n)
        rows += R"(,{"rss":)" + std::to_string(n == 15 ? 4000 : 3000 - n) + R"(,"pid":")"
            + std::to_string(100 + n) + R"(","name":"n","grp":"g","cmd":"n","cpu":1})";
    tab.fetch(snapshotOf(rows));
    tab.settle();
    EXPECT_EQ(tab.scrollBar().value(), 400) << "who reads stays where he reads";
    tab.scrollBar().setValue(0);
    tab.delegate.frame().renderBody();
    ASSERT_TRUE(tab.keyboard());
    EXPECT_EQ(tab.keyboard()->objectName(), "stop-115") << "a press asks for the same process";
}

TEST(WorkloadsTab, ARowsMenuOpensForPointerKeyboardAndScreenReaderAndOutlivesTheRow)
{
    using Open = std::function<void(ProcessRowView&)>;
    const auto send = [](QContextMenuEvent::Reason reason) {
        return [reason](ProcessRowView& row) {
            QContextMenuEvent event(reason, QPoint(9, 9), row.mapToGlobal(QPoint(9, 9)));
            QCoreApplication::sendEvent(&row, &event);
        };
    };
    const std::pair<const char*, Open> ways[] {
        { "pointer", send(QContextMenuEvent::Mouse) },
        { "key", send(QContextMenuEvent::Keyboard) },
        { "shift and F10", [](ProcessRowView& row) { sendKey(row, Qt::Key_F10, Qt::ShiftModifier); } },
        { "screen reader",
            [](ProcessRowView& row) {
                auto* told = QAccessible::queryAccessibleInterface(&row)->actionInterface();
                ASSERT_TRUE(told->actionNames().contains(QAccessibleActionInterface::showMenuAction()));
                told->doAction(QAccessibleActionInterface::showMenuAction());
                QCoreApplication::processEvents();
            } },
    };
    const std::pair<std::size_t, QStringList> rows[] {
        { 0, { "process · node", "pid 70 · 1.5 gb rss", "", "stop this process (SIGTERM, asks first)" } },
        { 1, { "process · finder", "pid 71 · 9 mb rss", "", "why is this process protected?" } },
    };
    for (const auto& [way, open] : ways)
        for (const auto& [at, expected] : rows) {
            SCOPED_TRACE(way);
            OpenWorkloads tab(snapshotOf(two));
            open(*tab.rows().at(at));
            const QPointer<PanelMenu> menu = tab.menu();
            ASSERT_TRUE(menu);
            QStringList shown;
            for (const QAction* action : menu->actions()) {
                shown.push_back(action->text());
                EXPECT_EQ(action->isEnabled() && !action->isSeparator(), action == menu->actions().last());
            }
            EXPECT_EQ(shown, expected);
            EXPECT_EQ(menu->activeAction() == menu->actions().last(), std::string_view(way) != "pointer");
            tab.delegate.frame().renderBody();
            tab.settle();
            menu->actions().last()->trigger();
            tab.answer(R"({"allowed":[{"pid":70,"name":"node","cmd":"node x","rss_mb":9,"start":5}]})");
            tab.deliver();
            ASSERT_EQ(tab.alerts.asked.size(), 1U);
            EXPECT_EQ(tab.alerts.asked[0].title, at == 0 ? "stop node · pid 70" : "finder is protected");
            tab.delegate.panel().close("x");
            tab.settle();
            EXPECT_FALSE(menu) << "it goes with the panel";
        }
}

TEST(WorkloadsTab, LongNamesGiveWayAndFiguresDont)
{
    const std::string word(400, 'w');
    OpenWorkloads tab(snapshotOf(R"({"rss":104857,"pid":"4194304","name":")" + word + R"(","grp":")" + word
        + R"(","cmd":")" + word + R"(","cpu":12800})"));
    const ProcessRowView& row = *tab.rows().at(0);
    const std::vector<ZOLShellLabel*> labels = all<ZOLShellLabel>(row);
    EXPECT_EQ(labels.at(0)->shownLines(), QStringList { "4194304" });
    EXPECT_TRUE(labels.at(1)->isCut());
    EXPECT_EQ(labels.at(3)->shownLines(), QStringList { "12800%" });
    EXPECT_EQ(labels.at(4)->shownLines(), QStringList { "102.4 gb" });
    EXPECT_EQ(tab.stop(0).geometry().right(), 723);
    int right = 0;
    for (const ZOLShellLabel* label : labels) {
        EXPECT_GE(label->x(), right);
        right = label->x() + label->width();
    }
}

} // namespace
