// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtAlerts.h"

#include "support/QtEnvironment.h"

#include <QDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QPointer>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>
#include <QWidget>

namespace {

using namespace platform;

/// Does something once the question stands, and the answer.
std::size_t answerTo(QtAlerts& alerts, const Alert& alert, const std::function<void(QDialog&)>& act)
{
    QTimer::singleShot(0, qApp, [&] { act(*qobject_cast<QDialog*>(QApplication::activeModalWidget())); });
    return alerts.runModal(alert);
}

/// Presses a key in the question.
std::function<void(QDialog&)> press(Qt::Key key)
{
    return [key](QDialog& dialog) {
        QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(&dialog, &down);
    };
}

const Alert question { "Stop it?", "It & its children.", { "Stop", "Show", "Cancel" }, true };

TEST(QtAlerts, ReturnIsTheFirstButtonAndEscapeOrClosingTheLastOrTheOneThatCancels)
{
    QtAlerts alerts;
    const auto close = [](QDialog& dialog) { dialog.close(); };
    EXPECT_EQ(answerTo(alerts, question, press(Qt::Key_Return)), 0U);
    EXPECT_EQ(answerTo(alerts, question, press(Qt::Key_Escape)), 2U);
    EXPECT_EQ(answerTo(alerts, question, close), 2U);
    const Alert safe { .title = "Compact?", .text = "", .buttons = { "Cancel", "Compact" }, .cancel = 0 };
    EXPECT_EQ(answerTo(alerts, safe, press(Qt::Key_Escape)), 0U);
    EXPECT_EQ(answerTo(alerts, { "Done", "", { "OK" } }, close), 0U);
}

TEST(QtAlerts, TheLoopGoesOnUnderneathAndMayDropTheWindowThatTheQuestionStandsOver)
{
    QtAlerts alerts;
    QPointer<QWidget> panel = new QWidget;
    panel->show();
    panel->activateWindow();
    ASSERT_TRUE(spinUntil([&] { return QApplication::activeWindow() == panel; }));
    std::optional<std::size_t> inner;
    EXPECT_EQ(answerTo(alerts, question,
                  [&](QDialog& dialog) {
                      panel->deleteLater();
                      EXPECT_TRUE(spinUntil([&] { return !panel; }));
                      inner = answerTo(alerts, question, press(Qt::Key_Return));
                      EXPECT_TRUE(alerts.isUp()) << "the first one still waits";
                      press(Qt::Key_Escape)(dialog);
                  }),
        2U);
    EXPECT_EQ(inner, 0U);
    EXPECT_FALSE(alerts.isUp());
}

TEST(QtAlerts, AWordThatIsLongerThanALineIsShownToItsEnd)
{
    QtAlerts alerts;
    // The second part of a sign of two parts must not be cut off.
    const QString path
        = "/home/someone/" + QString("MMMMMMMMMM").repeated(12) + QString("e\u0301").repeated(50);
    answerTo(alerts, { path.toStdString(), "12 mb · " + path.toStdString(), { "OK" } }, [&](QDialog& dialog) {
        for (const QLabel* label : dialog.findChildren<QLabel*>()) {
            const QRect needed = label->fontMetrics().boundingRect(
                QRect(0, 0, label->width(), 10000), Qt::TextWordWrap, label->text());
            EXPECT_LE(needed.width(), label->width());
            EXPECT_LE(needed.height(), label->height());
            EXPECT_TRUE(label->accessibleName().endsWith(path)) << "a screen reader reads it unbroken";
            EXPECT_FALSE(label->text().contains(QString::fromUtf8("e\u200b")));
        }
        dialog.close();
    });
}

TEST(QtAlerts, AVeryLongTextScrollsAboveItsButtons)
{
    QtAlerts alerts;
    const auto heightWith = [&](const std::string& text, bool scrolls) {
        int height = 0;
        answerTo(alerts, { "t", text, { "OK" } }, [&](QDialog& dialog) {
            height = dialog.height();
            const auto* scroll = dialog.findChild<QScrollArea*>();
            if (scrolls) {
                ASSERT_TRUE(scroll);
                EXPECT_GT(scroll->verticalScrollBar()->maximum(), 1000) << "all of it is there";
            } else {
                EXPECT_FALSE(scroll);
            }
            dialog.close();
        });
        return height;
    };
    const int usual = heightWith("one line", false);
    std::string lines;
    for (int line = 0; line < 200; ++line)
        lines += "line\n";
    EXPECT_GT(heightWith(lines, true), usual);
    EXPECT_LT(heightWith(lines, true), 500);
}

} // namespace
