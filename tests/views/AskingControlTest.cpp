// SPDX-License-Identifier: Apache-2.0
#include "app/AppDelegate.h"
#include "platform/qt/QtAlerts.h"
#include "platform/qt/QtMainQueue.h"

#include "support/FakePlatform.h"
#include "support/QtEnvironment.h"

#include <QDialog>
#include <QPointer>
#include <QPushButton>
#include <QScrollArea>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

/// The panel's frame on the real loop, with real questions.
struct AskingBench : FakePlatform {
    AskingBench()
    {
        queue.attach();
        newContent();
        root->show();
    }

    ~AskingBench() { queue.detach(); }

    void newContent()
    {
        root.reset(app.frame().makeContent());
        root->resize(760, 700);
        app.frame().renderBody();
    }

    [[nodiscard]] QWidget* page() const { return root->findChild<QScrollArea*>()->widget(); }

    platform::QtMainQueue queue;
    platform::QtAlerts questions;
    AppDelegate app { { kernel, machine, children, processSignals, defaults, suites, files, bundle, time,
        queue, time, globalQueue, statusBar, notifications, workspace, pasteboard, occlusion, popovers, mouse,
        hotKeys, screens, questions, floatingWindows, urlEvents, instances, [] {} } };
    std::unique_ptr<QWidget> root;
};

TEST(AskingControl, LivesUntilItsQuestionIsAnsweredThoughTheBodyIsBuiltAnewMeanwhile)
{
    const std::pair<const char*, std::function<void(AskingBench&)>> rebuilds[] {
        { "another body", [](AskingBench& bench) { bench.app.frame().renderBody(); } },
        { "another frame", [](AskingBench& bench) { bench.newContent(); } },
    };
    for (const auto& [what, rebuild] : rebuilds) {
        SCOPED_TRACE(what);
        AskingBench bench;
        auto* const asking = new QPushButton("ask", bench.page());
        const QPointer<QWidget> control = asking;
        const QPointer<QWidget> body = bench.page();
        std::optional<std::size_t> answer;
        QObject::connect(asking, &QPushButton::clicked, [&, asking] {
            bench.queue.post([&, asking] {
                answer = bench.questions.runModal({ "Stop it?", "", { "Stop", "Cancel" } });
                ASSERT_TRUE(control);
                asking->setText("stopped");
                EXPECT_EQ(asking->text(), "stopped");
            });
        });

        int turns = 0;
        QTimer refresh;
        QObject::connect(&refresh, &QTimer::timeout, [&, &rebuild = rebuild] {
            auto* const question = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            if (!question)
                return;
            rebuild(bench);
            // Behind the jobs that drop old bodies.
            bench.queue.post([&, question = QPointer(question)] {
                if (++turns >= 3 && question)
                    question->accept();
            });
        });
        refresh.start(1);
        asking->click();
        ASSERT_TRUE(spinUntil([&] { return answer.has_value(); }));
        EXPECT_EQ(answer, 1U) << "closed without a choice";
        EXPECT_NE(bench.page(), body);
        EXPECT_TRUE(spinUntil([&] { return !body; })) << "it goes after the answer";
    }
}

} // namespace
