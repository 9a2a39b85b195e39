// SPDX-License-Identifier: Apache-2.0
#include "views/AppBench.h"

#include "panel/PanelRootView.h"

#include "support/QtEnvironment.h"

#include <QKeyEvent>
#include <QScrollArea>
#include <QScrollBar>

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

/// The application with its panel on screen.
struct OpenPanel : AppBench {
    OpenPanel() { delegate.applicationDidFinishLaunching(false); }

    [[nodiscard]] QScrollBar& scrollBar() { return *root().findChild<QScrollArea*>()->verticalScrollBar(); }
    [[nodiscard]] QWidget* page() { return root().findChild<QScrollArea*>()->widget(); }
};

void press(QWidget& widget, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QKeyEvent event(QEvent::KeyPress, key, modifiers);
    QCoreApplication::sendEvent(&widget, &event);
}

TEST(PanelRootView, KeysReachTheTabsAndCloseThePanel)
{
    struct Case {
        int key;
        Qt::KeyboardModifiers modifiers;
        const char* expected;
    };
    const Case cases[] {
        { Qt::Key_1, Qt::NoModifier, "dashboard" },
        { Qt::Key_2, Qt::NoModifier, "system" },
        { Qt::Key_3, Qt::NoModifier, "processes" },
        { Qt::Key_4, Qt::KeypadModifier, "agents" },
        { Qt::Key_5, Qt::NoModifier, "insights" },
        { Qt::Key_6, Qt::ShiftModifier, "cleanup" },
        { Qt::Key_7, Qt::NoModifier, "automations" },
        { Qt::Key_8, Qt::NoModifier, "server" },
        { Qt::Key_9, Qt::NoModifier, "settings" },
        { Qt::Key_0, Qt::NoModifier, "" },
        { Qt::Key_3, Qt::ControlModifier, "" },
        { Qt::Key_3, Qt::AltModifier, "" },
        { Qt::Key_3, Qt::MetaModifier, "" },
        { Qt::Key_Escape, Qt::NoModifier, "close esc" },
        { Qt::Key_W, Qt::MetaModifier, "close cmd-w" },
        { Qt::Key_W, Qt::ControlModifier, "close cmd-w" },
        { Qt::Key_W, Qt::NoModifier, "" },
    };
    std::string heard;
    PanelRootView view(OstrelStyle(ZOLThemePolicy::themeDefault),
        { .switchMode = [&](OstrelMode mode) { heard = words(mode).title; },
            .close = [&](std::string_view reason) { heard = "close " + std::string(reason); } });
    for (const Case& c : cases) {
        heard.clear();
        press(view, c.key, c.modifiers);
        EXPECT_EQ(heard, c.expected) << c.key << " " << c.modifiers.toInt();
    }
}

TEST(PanelFrame, IsOneFixedFrameWithItsTabsInOrder)
{
    OpenPanel panel;
    EXPECT_EQ(panel.root().size(), QSize(760, 700));
    EXPECT_EQ(panel.root().minimumSize(), panel.root().maximumSize());
    EXPECT_LE(panel.page()->width(), 728);
    int last = -1;
    for (const OstrelModeWords& mode : ostrelModes()) {
        const auto title = QString::fromUtf8(mode.title.data(), static_cast<qsizetype>(mode.title.size()));
        QAbstractButton* tab = panel.button(title);
        if (!tab || mode.mode == OstrelMode::settings)
            continue;
        EXPECT_EQ(tab->toolTip().toStdString(), mode.hint);
        const QPoint place = tab->mapTo(&panel.root(), QPoint(0, 0));
        EXPECT_GT(place.x(), last) << mode.title;
        EXPECT_LE(place.x() + tab->width(), 760) << mode.title;
        last = place.x();
        tab->click();
        EXPECT_EQ(panel.delegate.frame().mode(), mode.mode);
        EXPECT_TRUE(tab->isChecked()) << mode.title;
    }
    for (const char* tab : { "dashboard", "processes" })
        EXPECT_TRUE(panel.button(tab)) << tab;
}

TEST(PanelFrame, KeysChangeTheTabAndEscapeClosesThePanel)
{
    OpenPanel panel;
    press(panel.root(), Qt::Key_3);
    EXPECT_EQ(panel.delegate.frame().mode(), OstrelMode::processes);
    EXPECT_TRUE(panel.button("processes")->isChecked());
    EXPECT_FALSE(panel.button("dashboard")->isChecked());
    press(panel.root(), Qt::Key_0);
    EXPECT_EQ(panel.delegate.frame().mode(), OstrelMode::processes);
    press(panel.root(), Qt::Key_Escape);
    EXPECT_FALSE(panel.delegate.frame().shown());
    panel.delegate.panel().toggle();
    EXPECT_EQ(panel.delegate.frame().mode(), OstrelMode::processes) << "the tab outlives a closing";
    panel.root().close();
    EXPECT_FALSE(panel.delegate.frame().shown());
    EXPECT_EQ(panel.time.timers(), 1) << "the desktop's closing is a closing like any other";
    panel.delegate.panel().toggle();
    EXPECT_TRUE(panel.delegate.frame().shown()) << "and the window is kept";
}

TEST(PanelFrame, SaysWhatIsMissingAndOffersToRetry)
{
    struct Case {
        const char* what;
        std::vector<std::pair<std::string, int>> answers;
        std::vector<const char*> texts;
        bool retry;
    };
    const Case cases[] {
        { "nothing yet", {},
            { "native monitor active · waiting for details", "Reading this Mac…",
                "Memory, process and session counts will appear when the local snapshot completes." },
            false },
        { "a failure", { { "", 1 } },
            { "collector unavailable · retry below", "Snapshot unavailable", "the script failed" }, true },
        { "no snapshot", { { "[]", 0 } },
            { "collector unavailable · retry below", "Collector returned invalid data" }, true },
        { "an empty one", { { R"({"ram":{},"swap":{}})", 0 } },
            { "No snapshot yet", "Refresh to collect memory, process and session readings." }, true },
        { "a failure behind a good one", { { snapshotText(3), 0 }, { "", 1 } },
            { "Snapshot stale · collector unavailable",
                "Showing the last successful reading. the script failed" },
            true },
        { "a good one", { { snapshotText(3), 0 } }, {}, false },
    };
    for (const Case& c : cases) {
        OpenPanel panel;
        for (const auto& [text, status] : c.answers)
            panel.answer(text, status);
        const QStringList texts = panel.texts();
        for (const char* text : c.texts)
            EXPECT_TRUE(texts.contains(text)) << c.what << ": " << text;
        QAbstractButton* retry = panel.button("retry snapshot");
        EXPECT_EQ(retry != nullptr, c.retry) << c.what;
        if (!retry)
            continue;
        EXPECT_EQ(retry->width(), 160);
        EXPECT_EQ(retry->toolTip(), "read the process snapshot again; nothing is stopped or changed");
        const auto runs = panel.children.requests.size();
        retry->click();
        panel.globalQueue.run();
        EXPECT_EQ(panel.children.requests.size(), runs + 1) << c.what;
    }
}

TEST(PanelFrame, TheReadoutFollowsTheTickAndTheSnapshot)
{
    OpenPanel panel;
    panel.answer(snapshotText(2));
    EXPECT_TRUE(panel.texts().contains(
        "now: cpu 0% · swap 0% · load 0.0   |   collector (0s ago): 7 mcp / 0 sess · ok"))
        << panel.texts().join("\n").toStdString();
    panel.kernel.reading.load1 = 1.5;
    panel.kernel.ticks->user += 30;
    panel.kernel.ticks->idle += 70;
    panel.time.advance(platform::Seconds(5));
    EXPECT_TRUE(panel.texts().contains(
        "now: cpu 30% · swap 0% · load 1.5   |   collector (5s ago): 7 mcp / 0 sess · ok"))
        << panel.texts().join("\n").toStdString();
}

TEST(PanelFrame, ARebuildKeepsTheScrollPositionAndAnotherTabStartsAtItsTop)
{
    OpenPanel panel;
    panel.answer(snapshotText(60));
    std::string trouble;
    for (int n = 0; n < 100; ++n)
        trouble += "word ";
    panel.answer("", 1, trouble);
    press(panel.root(), Qt::Key_3);
    QCoreApplication::processEvents();
    const int most = panel.scrollBar().maximum();
    ASSERT_GT(most, 20) << "the list is longer than the body";
    for (const int place : { 10, most }) {
        panel.scrollBar().setValue(place);
        const QWidget* before = panel.page();
        panel.delegate.frame().renderBody();
        EXPECT_EQ(panel.scrollBar().value(), place);
        QCoreApplication::processEvents();
        EXPECT_EQ(panel.scrollBar().value(), place);
        EXPECT_NE(panel.page(), before);
    }
    press(panel.root(), Qt::Key_1);
    press(panel.root(), Qt::Key_3);
    QCoreApplication::processEvents();
    EXPECT_EQ(panel.scrollBar().value(), 0);
}

TEST(PanelFrame, AThrottledRebuildHappensAtMostOnceInTwoSeconds)
{
    OpenPanel panel;
    panel.answer(snapshotText(1));
    PanelFrame& frame = panel.delegate.frame();
    frame.renderBody();
    const auto rebuilds = [&](double seconds, bool force) {
        const QWidget* before = panel.page();
        panel.time.jump(platform::Seconds(seconds));
        frame.renderBodyThrottled(force);
        return panel.page() != before;
    };
    EXPECT_FALSE(rebuilds(0, false));
    EXPECT_FALSE(rebuilds(2.0, false));
    EXPECT_TRUE(rebuilds(0.1, false));
    EXPECT_FALSE(rebuilds(1.9, false));
    EXPECT_TRUE(rebuilds(0, true));
    EXPECT_FALSE(rebuilds(1.9, false)) << "a forced one counts as well";
}

TEST(PanelFrame, ForeignTextIsShownAsItIs)
{
    OpenPanel panel;
    panel.answer(snapshotText(3));
    for (const int key : { Qt::Key_1, Qt::Key_3 }) {
        press(panel.root(), key);
        for (const QLabel* label : panel.root().findChildren<QLabel*>())
            EXPECT_TRUE(label->text().isEmpty() || label->textFormat() == Qt::PlainText)
                << label->text().toStdString();
    }
}

} // namespace
