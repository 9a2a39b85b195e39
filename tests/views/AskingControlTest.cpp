// SPDX-License-Identifier: Apache-2.0
#include "panel/LiveRegistry.h"
#include "panel/PanelFrame.h"
#include "platform/qt/QtAlerts.h"
#include "platform/qt/QtMainQueue.h"

#include "support/FakePlatform.h"
#include "support/QtEnvironment.h"
#include "support/StateBench.h"

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
struct AskingBench : StateBench {
    AskingBench()
    {
        queue.attach();
        frame.setActions({ [](std::string_view) {}, [](bool) {}, [](ZOLThemePolicy::Mode) {}, [] {}, [] {} });
        newContent();
        root->show();
    }

    ~AskingBench() { queue.detach(); }

    void newContent()
    {
        root.reset(frame.makeContent());
        root->resize(760, 700);
        frame.renderBody();
    }

    [[nodiscard]] QWidget* page() const { return root->findChild<QScrollArea*>()->widget(); }

    FakeWorkspace workspace;
    FakeOcclusion occlusion;
    platform::QtMainQueue queue;
    platform::QtAlerts alerts;
    LiveRegistry live;
    OstrelHistory history;
    FakePlatform::Machine processInfo;
    Maintenance maintenance { { queue, globalQueue, time, alerts }, runner, snapshots };
    LocalAnalyst analyst { { queue, globalQueue, alerts }, runner, snapshots, maintenance };
    FakeProcessSignals signals;
    JanitorTab janitor { { { queue, globalQueue, files, bundle, time, children, signals }, defaults, alerts,
        workspace } };
    Workloads workloads { { queue, alerts, janitor, maintenance, snapshots } };
    AutomationsTab automations { { queue, globalQueue, files, bundle, time, children, alerts, workspace } };
    PanelFrame frame { { tick, snapshots, history, settings },
        { time, { time, queue, workspace, occlusion }, alerts, defaults, processInfo, analyst, maintenance,
            janitor, workloads, automations },
        live };
    std::unique_ptr<QWidget> root;
};

TEST(AskingControl, LivesUntilItsQuestionIsAnsweredThoughTheBodyIsBuiltAnewMeanwhile)
{
    const std::pair<const char*, std::function<void(AskingBench&)>> rebuilds[] {
        { "another body", [](AskingBench& bench) { bench.frame.renderBody(); } },
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
                answer = bench.alerts.runModal({ "Stop it?", "", { "Stop", "Cancel" } });
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
