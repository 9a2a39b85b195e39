// SPDX-License-Identifier: Apache-2.0
#include "views/AppBench.h"

#include "design/controls/PaintedButton.h"
#include "panel/PanelRootView.h"

#include "support/QtEnvironment.h"

#include <QKeyEvent>
#include <QScrollArea>
#include <QScrollBar>

#include <string>
#include <tuple>
#include <utility>
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
    constexpr auto plain = Qt::NoModifier;
    const std::tuple<int, Qt::KeyboardModifiers, const char*> cases[] { { Qt::Key_1, plain, "dashboard" },
        { Qt::Key_2, plain, "system" }, { Qt::Key_3, plain, "processes" },
        { Qt::Key_4, Qt::KeypadModifier, "agents" }, { Qt::Key_5, plain, "insights" },
        { Qt::Key_6, Qt::ShiftModifier, "cleanup" }, { Qt::Key_7, plain, "automations" },
        { Qt::Key_8, plain, "server" }, { Qt::Key_9, plain, "settings" }, { Qt::Key_0, plain, "" },
        { Qt::Key_3, Qt::ControlModifier, "" }, { Qt::Key_Escape, plain, "close esc" },
        { Qt::Key_W, Qt::MetaModifier, "close cmd-w" }, { Qt::Key_W, Qt::ControlModifier, "close cmd-w" },
        { Qt::Key_W, plain, "" } };
    std::string heard;
    PanelRootView view({ .switchMode = [&](OstrelMode mode) { heard = words(mode).title; },
        .close = [&](std::string_view reason) { heard = "close " + std::string(reason); } });
    for (const auto& [key, modifiers, expected] : cases) {
        heard.clear();
        press(view, key, modifiers);
        EXPECT_EQ(heard, expected) << key << " " << modifiers.toInt();
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
        QAbstractButton* tab = panel.button(QString::fromStdString(std::string(mode.title)));
        if (!tab || mode.mode == OstrelMode::settings)
            continue;
        EXPECT_EQ(tab->toolTip().toStdString(), mode.hint);
        const int left = tab->mapTo(&panel.root(), QPoint(0, 0)).x();
        EXPECT_GT(left, last) << mode.title;
        last = left;
        tab->click();
        EXPECT_TRUE(dynamic_cast<PaintedButton&>(*tab).isActive()) << mode.title;
    }
    for (const char* tab : { "dashboard", "processes" })
        EXPECT_TRUE(panel.button(tab)) << tab;
}

TEST(PanelFrame, ItsTabOutlivesAClosingAndTheDesktopsClosingIsOneLikeAnyOther)
{
    OpenPanel panel;
    press(panel.root(), Qt::Key_3);
    press(panel.root(), Qt::Key_Escape);
    panel.delegate.panel().toggle();
    EXPECT_EQ(panel.delegate.frame().mode(), OstrelMode::processes);
    panel.root().close();
    EXPECT_EQ(panel.time.timers(), 1) << "the panel's timer has gone";
    panel.delegate.panel().toggle();
    EXPECT_TRUE(panel.delegate.frame().shown()) << "the window is kept";
}

TEST(PanelFrame, SaysWhatIsMissingAndOffersToRetry)
{
    const std::string good = snapshotText(3);
    const std::string failed;
    using Texts = std::vector<const char*>;
    const std::tuple<std::vector<std::string>, Texts, bool> cases[] {
        { {},
            { "native monitor active · waiting for details", "Reading this Mac…",
                "Memory, process and session counts will appear when the local snapshot completes." },
            false },
        { { failed }, { "Snapshot unavailable", "the script failed" }, true },
        { { R"({"ram":{},"swap":{}})" },
            { "No snapshot yet", "Refresh to collect memory, process and session readings." }, true },
        { { good, failed }, { "Showing the last successful reading. the script failed" }, true },
        { { good }, {}, false },
    };
    for (const auto& [outputs, texts, offered] : cases) {
        OpenPanel panel;
        for (const std::string& output : outputs)
            panel.fetch(output, output == failed ? "the script failed" : "");
        for (const char* text : texts)
            EXPECT_TRUE(panel.texts().contains(text)) << text;
        QAbstractButton* retry = panel.button("retry snapshot");
        ASSERT_EQ(retry != nullptr, offered) << panel.texts().join("\n").toStdString();
        if (!retry)
            continue;
        EXPECT_EQ(retry->toolTip(), "read the process snapshot again; nothing is stopped or changed");
        const auto runs = panel.children.requests.size();
        retry->click();
        panel.deliver();
        EXPECT_EQ(panel.children.requests.size(), runs + 1);
    }
}

TEST(PanelFrame, TheReadoutFollowsTheTickAndTheSnapshot)
{
    OpenPanel panel;
    panel.fetch(snapshotText(2));
    panel.kernel.ticks->user += 30;
    panel.kernel.ticks->idle += 70;
    panel.time.advance(platform::Seconds(5));
    EXPECT_TRUE(panel.texts().contains(
        "now: cpu 30% · swap 0% · load 0.0   |   collector (5s ago): 7 mcp / 0 sess · ok"))
        << panel.texts().join("\n").toStdString();
}

TEST(PanelFrame, ARebuildKeepsTheScrollPositionAndAnotherTabStartsAtItsTop)
{
    OpenPanel panel;
    panel.fetch(snapshotText(60));
    panel.fetch("", QString("word ").repeated(100).toStdString());
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
    panel.fetch(snapshotText(1));
    PanelFrame& frame = panel.delegate.frame();
    frame.renderBody();
    const auto rebuilds = [&](double seconds, bool force) {
        const QWidget* before = panel.page();
        panel.time.jump(platform::Seconds(seconds));
        frame.renderBodyThrottled(force);
        return panel.page() != before;
    };
    EXPECT_FALSE(rebuilds(2.0, false));
    EXPECT_TRUE(rebuilds(0.1, false));
    EXPECT_FALSE(rebuilds(1.9, false));
    EXPECT_TRUE(rebuilds(0, true));
    EXPECT_FALSE(rebuilds(1.9, false)) << "a forced one counts as well";
}

TEST(PanelFrame, ForeignTextIsShownAsItIs)
{
    OpenPanel panel;
    panel.fetch(snapshotText(3));
    for (const int key : { Qt::Key_1, Qt::Key_3 }) {
        press(panel.root(), key);
        for (const QLabel* label : panel.root().findChildren<QLabel*>())
            EXPECT_TRUE(label->text().isEmpty() || label->textFormat() == Qt::PlainText)
                << label->text().toStdString();
    }
}

} // namespace
