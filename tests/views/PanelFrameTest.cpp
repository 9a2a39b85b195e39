// SPDX-License-Identifier: Apache-2.0
#include "views/OpenTab.h"

#include "design/Appearance.h"
#include "design/controls/ZOLShellButton.h"
#include "design/controls/ZOLTabStrip.h"
#include "panel/SlimScrollBar.h"

#include <QLineEdit>
#include <QMouseEvent>
#include <QRegularExpression>

#include <string_view>

namespace {

using namespace ostrel;

/// The application with its panel on screen.
struct OpenPanel : AppBench {
    OpenPanel() { start(); }

    [[nodiscard]] QScrollBar& scrollBar() { return *root().findChild<QScrollArea*>()->verticalScrollBar(); }
    [[nodiscard]] ZOLTabStrip& strip() { return *all<ZOLTabStrip>(root()).front(); }
    [[nodiscard]] QWidget* overlay() { return root().findChild<QWidget*>("help-overlay"); }
    /// The reason kept for the last close.
    [[nodiscard]] std::string reason()
    {
        const std::string text = defaults.text(PanelController::lastCloseKey).value_or("");
        return text.substr(0, text.find(' '));
    }
    [[nodiscard]] QWidget* page() { return root().findChild<QScrollArea*>()->widget(); }
};

void mouse(QWidget& widget, QEvent::Type type, QPointF at)
{
    QMouseEvent event(type, at, at, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&widget, &event);
}

/// A view over the body that a text can be typed into.
QLineEdit& addTextField(QWidget& root)
{
    auto* field = new QLineEdit(root.findChild<QScrollArea*>()->widget());
    field->show();
    field->setFocus();
    return *field;
}

/// The tab that is shown as the chosen one; empty for none.
QString chosenTab(OpenPanel& panel)
{
    for (const auto& [id, tab] : panel.strip().buttons())
        if (tab->isActive())
            return QString::fromStdString(id);
    return {};
}

TEST(PanelFrame, IsOneFrameWithEightTabsInOrderAndTheNinthBehindTheHeadersButton)
{
    OpenPanel panel;
    EXPECT_EQ(panel.root().size(), QSize(760, 700));
    int last = -1;
    for (const OstrelModeWords& mode : ostrelModes()) {
        const int key = static_cast<int>(index(mode.mode)) + 1;
        sendKey(panel.root(), Qt::Key_0 + key);
        EXPECT_EQ(panel.delegate.frame().mode(), mode.mode);
        QAbstractButton* settings = panel.button("settings");
        ASSERT_TRUE(settings);
        EXPECT_EQ(dynamic_cast<PaintedButton&>(*settings).isActive(), key == 9);
        if (key == 9) {
            EXPECT_EQ(chosenTab(panel), "");
            continue;
        }
        EXPECT_EQ(chosenTab(panel).toStdString(), mode.title);
        const ZOLShellButton& tab = *panel.strip().buttons().at(std::string(mode.title));
        EXPECT_EQ(tab.toolTip().toStdString(), std::string(mode.hint) + " · key " + std::to_string(key));
        const QRect place(tab.mapTo(&panel.root(), QPoint()), tab.size());
        EXPECT_GT(place.left(), last) << mode.title;
        EXPECT_LE(place.right(), 744) << mode.title;
        last = place.left();
    }
    panel.strip().buttons().at("server")->click();
    EXPECT_EQ(panel.delegate.frame().mode(), OstrelMode::server);
    sendKey(panel.root(), Qt::Key_0);
    sendKey(panel.root(), Qt::Key_3, Qt::ControlModifier);
    sendKey(panel.root(), Qt::Key_3, Qt::MetaModifier);
    EXPECT_EQ(panel.delegate.frame().mode(), OstrelMode::server) << "no tab's key";
    sendKey(panel.root(), Qt::Key_4, Qt::KeypadModifier);
    EXPECT_EQ(panel.delegate.frame().mode(), OstrelMode::sessions);
}

TEST(PanelFrame, KeysAndButtonsCloseItAndATabOutlivesAClosing)
{
    const auto key = [](int code, Qt::KeyboardModifiers held = Qt::NoModifier) {
        return [code, held](OpenPanel& panel) { sendKey(panel.root(), code, held); };
    };
    const std::pair<const char*, std::function<void(OpenPanel&)>> cases[] { { "esc", key(Qt::Key_Escape) },
        { "cmd-w", key(Qt::Key_W, Qt::MetaModifier) }, { "cmd-w", key(Qt::Key_W, Qt::ControlModifier) },
        { "x", [](OpenPanel& panel) { panel.button("close panel")->click(); } },
        { "esc-field", [](OpenPanel& panel) { sendKey(addTextField(panel.root()), Qt::Key_Escape); } } };
    for (const auto& [reason, closes] : cases) {
        OpenPanel panel;
        sendKey(panel.root(), Qt::Key_3);
        closes(panel);
        EXPECT_FALSE(panel.delegate.frame().shown()) << reason;
        EXPECT_EQ(panel.reason(), reason);
        EXPECT_EQ(panel.time.timers(), 1) << "the panel's timer has gone";
        panel.delegate.panel().toggle();
        EXPECT_TRUE(panel.delegate.frame().shown());
        EXPECT_EQ(panel.delegate.frame().mode(), OstrelMode::processes);
    }
}

TEST(PanelFrame, WhatIsTypedIntoAFieldIsTheFieldsOwn)
{
    OpenPanel panel;
    QLineEdit& field = addTextField(panel.root());
    for (const auto& [key, text] : { std::pair(Qt::Key_3, "3"), { Qt::Key_Slash, "/" }, { Qt::Key_W, "w" } })
        sendKey(field, key, Qt::NoModifier, text);
    sendKey(field, Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(field.text(), "3/w");
    EXPECT_EQ(panel.delegate.frame().mode(), OstrelMode::overview);
    EXPECT_TRUE(panel.delegate.frame().shown());
    EXPECT_FALSE(panel.overlay());
}

TEST(PanelFrame, TheHelpComesAndGoesAndEscapeTakesItAwayFirst)
{
    OpenPanel panel;
    panel.workspace.setReduceMotion(true);
    sendKey(panel.root(), Qt::Key_Slash);
    ASSERT_TRUE(panel.overlay());
    EXPECT_EQ(panel.overlay()->accessibleName(), "panel keys help – press escape or click to close");
    EXPECT_EQ(panel.overlay()->geometry().center(), panel.root().rect().center());
    EXPECT_TRUE(panel.texts().contains("6    cleanup"));
    sendKey(panel.root(), Qt::Key_Question, Qt::ShiftModifier);
    EXPECT_FALSE(panel.overlay()) << "the same key again";
    sendKey(panel.root(), Qt::Key_Slash);
    sendKey(panel.root(), Qt::Key_Escape);
    EXPECT_FALSE(panel.overlay());
    EXPECT_TRUE(panel.delegate.frame().shown());
    sendKey(panel.root(), Qt::Key_Slash);
    mouse(*panel.overlay(), QEvent::MouseButtonPress, { 5, 5 });
    mouse(*panel.overlay(), QEvent::MouseButtonRelease, { 5, 5 });
    EXPECT_FALSE(panel.overlay());
    sendKey(panel.root(), Qt::Key_Slash);
    panel.delegate.panel().close("x");
    EXPECT_FALSE(panel.overlay()) << "a closed panel keeps no help";
    panel.delegate.panel().show();

    panel.workspace.setReduceMotion(false);
    sendKey(panel.root(), Qt::Key_Slash);
    sendKey(panel.root(), Qt::Key_Escape);
    EXPECT_TRUE(panel.overlay()) << "it fades";
    EXPECT_TRUE(spinUntil([&] { return !panel.overlay(); }));
    sendKey(panel.root(), Qt::Key_Escape);
    EXPECT_FALSE(panel.delegate.frame().shown());
}

TEST(PanelFrame, ThePinIsOneForButtonStoreAndSurface)
{
    OpenPanel panel;
    EXPECT_EQ(panel.mouse.monitors.count(), 1);
    panel.button("pin panel open")->click();
    EXPECT_EQ(panel.defaults.boolean(Settings::pinKey), true);
    EXPECT_EQ(panel.mouse.monitors.count(), 0);
    panel.delegate.panel().setPinned(false);
    EXPECT_TRUE(panel.button("pin panel open")) << "the button follows";
}

/// The panel's ground, away from everything on it.
QColor ground(QWidget& root) { return root.grab().toImage().pixelColor(2, root.height() / 2); }

TEST(PanelFrame, AThemeIsCarriedOutWhateverTheDesktopsOwnAndKeepsTabPlaceAndKeyboard)
{
    OpenPanel panel;
    panel.fetch(snapshotText(60));
    sendKey(panel.root(), Qt::Key_3);
    QCoreApplication::processEvents();
    const int place = panel.scrollBar().maximum();
    ASSERT_GT(place, 5);
    panel.scrollBar().setValue(place);
    EXPECT_GT(ground(panel.root()).redF(), 0.9);
    for (const char* name : { "white theme, switch to black", "black theme, switch to white" }) {
        const bool toDark = std::string_view(name).starts_with("white");
        QWidget* const before = &panel.root();
        panel.root().window()->activateWindow();
        panel.button(name)->setFocus();
        panel.button(name)->click();
        ASSERT_NE(&panel.root(), before) << "built anew";
        QApplication::setPalette(
            ZOLThemePolicy::appearance(toDark ? ZOLThemePolicy::Mode::light : ZOLThemePolicy::Mode::dark));
        EXPECT_EQ(ground(panel.root()).redF() < 0.2, toDark);
        EXPECT_EQ(panel.defaults.text("dev.quent.ostrel.theme"), toDark ? "dark" : "light");
        EXPECT_EQ(chosenTab(panel), "processes");
        EXPECT_TRUE(panel.delegate.frame().shown());
        QCoreApplication::processEvents();
        panel.time.advance(platform::Seconds(0.01));
        EXPECT_EQ(panel.scrollBar().value(), place);
        EXPECT_EQ(panel.root().focusWidget()->accessibleName(),
            toDark ? "black theme, switch to white" : "white theme, switch to black");
    }
}

TEST(PanelFrame, ABodyThatIsBuiltAnewKeepsTheKeyboardOnTheSameControl)
{
    OpenPanel panel;
    panel.fetch("", "the script failed");
    QAbstractButton* retry = panel.button("retry snapshot");
    ASSERT_TRUE(retry);
    retry->setFocus();
    panel.delegate.frame().renderBody();
    ASSERT_NE(panel.button("retry snapshot"), retry);
    EXPECT_EQ(panel.root().focusWidget(), panel.button("retry snapshot"));
    sendKey(panel.root(), Qt::Key_9);
    EXPECT_EQ(panel.root().focusWidget(), &panel.root()) << "there is no such control";
}

TEST(PanelFrame, AnOldBodyGoesInALaterTurnAndNotWhileAQuestionIsUp)
{
    OpenPanel panel;
    const auto rebuild = [&] {
        const QPointer<QWidget> old = panel.page();
        panel.delegate.frame().renderBody();
        EXPECT_TRUE(old) << "one of its handlers may be at work";
        return old;
    };
    QPointer<QWidget> old = rebuild();
    panel.time.advance(platform::Seconds(0.01));
    EXPECT_FALSE(old);
    panel.alerts.up = 1;
    old = rebuild();
    panel.time.advance(platform::Seconds(2));
    EXPECT_TRUE(old);
    panel.alerts.up = 0;
    panel.time.advance(platform::Seconds(1));
    EXPECT_FALSE(old);
}

TEST(PanelFrame, TheLineAboveTheBodyBelongsToTheServerAndTheSettings)
{
    OpenPanel panel;
    panel.fetch(snapshotText(1));
    sendKey(panel.root(), Qt::Key_8);
    panel.delegate.frame().refresh();
    EXPECT_TRUE(panel.texts().contains("server · on demand"));
    sendKey(panel.root(), Qt::Key_7);
    EXPECT_TRUE(panel.texts().contains("every scheduler on this Mac and the server, one list"));
    sendKey(panel.root(), Qt::Key_9);
    sendKey(panel.root(), Qt::Key_1);
    EXPECT_FALSE(panel.texts().filter(QRegularExpression("^now: cpu")).isEmpty()) << "the line is live again";
    panel.button("apps ↗")->click();
    EXPECT_EQ(panel.workspace.opened.size(), 1U);
}

TEST(PanelFrame, ALongListIsScrolledByKeysAndByTheSlimBarBesideIt)
{
    OpenPanel panel;
    panel.fetch(snapshotText(60));
    auto& slim = *all<SlimScrollBar>(panel.root()).front();
    sendKey(panel.root(), Qt::Key_8);
    QCoreApplication::processEvents();
    EXPECT_FALSE(slim.isVisible()) << "everything fits";
    sendKey(panel.root(), Qt::Key_3);
    QCoreApplication::processEvents();
    EXPECT_EQ(panel.page()->width(), 728);
    ASSERT_TRUE(slim.isVisible());
    EXPECT_GE(slim.x(), 744);
    EXPECT_LE(slim.geometry().right(), 760);
    sendKey(panel.root(), Qt::Key_End);
    EXPECT_EQ(panel.scrollBar().value(), panel.scrollBar().maximum());
    sendKey(panel.root(), Qt::Key_Home);
    mouse(slim, QEvent::MouseButtonPress, { 5, 5 });
    mouse(slim, QEvent::MouseMove, QPointF(5, 5 + slim.height()));
    mouse(slim, QEvent::MouseButtonRelease, { 5, 5 });
    EXPECT_EQ(panel.scrollBar().value(), panel.scrollBar().maximum());
}

TEST(PanelFrame, SaysWhatIsMissingAndOffersToRetry)
{
    const std::string good = snapshotText(3);
    const std::string failed;
    const std::tuple<std::vector<std::string>, QStringList, bool> cases[] {
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
        for (const QString& text : texts)
            EXPECT_TRUE(panel.texts().contains(text)) << text.toStdString();
        QAbstractButton* retry = panel.button("retry snapshot");
        ASSERT_EQ(retry != nullptr, offered) << panel.texts().join("\n").toStdString();
        if (!retry)
            continue;
        EXPECT_EQ(retry->toolTip(), "read the process snapshot again; nothing is stopped or changed");
        EXPECT_EQ(retry->mapTo(&panel.root(), QPoint()).x(), 16) << "where the text above begins";
        const auto runs = panel.children.requests.size();
        retry->click();
        panel.deliver();
        EXPECT_EQ(panel.children.requests.size(), runs + 1);
    }
}

TEST(PanelFrame, ARebuildKeepsTheScrollPositionAndAnotherTabStartsAtItsTop)
{
    OpenPanel panel;
    panel.fetch(snapshotText(60));
    panel.fetch("", QString("word ").repeated(100).toStdString());
    sendKey(panel.root(), Qt::Key_3);
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
    sendKey(panel.root(), Qt::Key_1);
    sendKey(panel.root(), Qt::Key_3);
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

} // namespace
