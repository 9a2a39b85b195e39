// SPDX-License-Identifier: Apache-2.0
#include "app/SelfTest.h"

#include "design/Appearance.h"
#include "design/OstrelStyle.h"
#include "design/ZOLAppMarkView.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/ZOLHintCard.h"
#include "design/controls/ZOLShellLabel.h"
#include "design/voxel/VoxelView.h"
#include "support/FakePlatform.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QImage>
#include <QLabel>
#include <QScrollArea>
#include <QSet>
#include <QTemporaryDir>

#include <functional>
#include <string>
#include <vector>

namespace {

using namespace ostrel;

/// The check on an idle application over a fake platform whose scripts never answer.
struct SelfTestBench : FakePlatform {
    SelfTestBench()
    {
        children.outcomes = { { .status = 15, .elapsed = platform::Seconds(0.2) }, { .status = 1 } };
        environment = { { "OSTREL_PUBLIC_FIXTURE", "1" } };
    }
    ~SelfTestBench() { OstrelStyle::override.reset(); }

    std::string run(const std::optional<std::string>& snapshot = {})
    {
        SelfTest test({ .app = delegate,
            .environment = environment,
            .print = [this](std::string_view line) { printed += line; },
            .aboutToCheck =
                [this](std::string_view step, QWidget& subject) {
                    if (disturb && step == at)
                        disturb(subject);
                } });
        return test.run(snapshot);
    }

    platform::Environment environment;
    AppDelegate delegate { services() };
    std::string printed;
    std::string at;
    std::function<void(QWidget&)> disturb;
};

TEST(SelfTest, PassesAndLeavesNothingBehind)
{
    SelfTestBench bench;
    const auto before = bench.defaults.writes;
    QSet<QString> said;
    bench.at = "combination";
    bench.disturb = [&said](QWidget& window) {
        for (const QLabel* label : window.findChildren<QLabel*>())
            said << label->text();
    };
    ASSERT_EQ(bench.run(), "");
    for (const char* text :
        { "Test collector unavailable", "Showing the last successful reading. snapshot received" })
        EXPECT_TRUE(said.contains(text)) << text;
    const auto& shown = bench.delegate.snapshots().lastData();
    ASSERT_TRUE(shown);
    EXPECT_EQ(shown->ts + " | " + shown->verdict.cause + " | " + shown->procs.at(0).name,
        "demo | Synthetic fixture. No action needed. | Example app");
    EXPECT_EQ(bench.defaults.writes, before) << "nothing is stored";
    EXPECT_FALSE(bench.delegate.barItem().exists());
    EXPECT_EQ(bench.delegate.history().points.size(), 120U);
}

/// Where the check is disturbed, how, and what it has to say then.
struct Disturbance {
    const char* step;
    std::function<void(QWidget&)> disturb;
    const char* failure;
    const char* missing; ///< the line that isn't printed
};

QWidget* named(QWidget& root, const char* name) { return root.findChild<QWidget*>(name); }

void rename(QWidget& root, const char* name)
{
    if (QWidget* view = named(root, name))
        view->setObjectName("elsewhere");
}

TEST(SelfTest, NamesTheFirstCheckThatDoesNotHoldAndPrintsNoFurtherLine)
{
    const std::vector<Disturbance> disturbances {
        { "combination", [](QWidget& window) { window.resize(800, 700); }, "window size", "PASS: 45" },
        { "combination", [](QWidget& window) { rename(window, "pin-panel"); }, "header buttons", "PASS: 45" },
        { "combination", [](QWidget& window) { named(window, "header-character")->setFixedHeight(30); },
            "header character", "PASS: 45" },
        { "combination", [](QWidget& window) { rename(window, "hint-esc"); }, "footer", "PASS: 45" },
        { "combination", [](QWidget& window) { window.show(); }, "hidden window: it is on screen",
            "PASS: 45" },
        { "hint card", [](QWidget& panel) { panel.resize(399, panel.height()); }, "hint card: size",
            "PASS: shared hint card" },
        { "hotkey recorder", [](QWidget& window) { rename(window, "hotkey-choice-3"); },
            "hotkey recorder: default and choices", "PASS: hotkey recorder" },
        { "hotkey recorder", [](QWidget& window) { rename(window, "hotkey-field"); },
            "hotkey recorder: the field at rest", "PASS: hotkey recorder" },
        { "doors",
            [](QWidget& window) {
                for (QWidget* view : window.findChildren<QWidget*>())
                    if (auto* button = dynamic_cast<OstrelButton*>(view);
                        button && button->caption() == "review cleanup")
                        button->setEnabled(false);
            },
            "dashboard door \"review cleanup\": too low, or off", "PASS: four" },
        { "theme",
            [](QWidget& content) {
                if (appearanceOf(content) == ZOLThemePolicy::Mode::dark)
                    setAppearance(content, ZOLThemePolicy::Mode::light);
            },
            "Theme canvas failed: dark pixel=#ffffff", "PASS: actual" },
    };
    for (const Disturbance& disturbance : disturbances) {
        SelfTestBench bench;
        bench.at = disturbance.step;
        bench.disturb = disturbance.disturb;
        EXPECT_EQ(bench.run(), disturbance.failure);
        EXPECT_EQ(bench.printed.find(disturbance.missing), std::string::npos) << disturbance.failure;
        EXPECT_EQ(bench.printed.find("PASS: collector"), std::string::npos) << disturbance.failure;
    }
}

TEST(SelfTest, ADashboardWithAFigureAndARunnerWithoutADeadlineFail)
{
    SelfTestBench bench;
    bench.at = "combination";
    bench.disturb = [](QWidget& window) {
        auto* page = window.findChild<QScrollArea*>()->widget();
        new ZOLAppMarkView(ZOLAppMark::ostrel, 40, page);
    };
    EXPECT_EQ(bench.run(), "compact dashboard contains no decorative hero");

    for (const auto& [outcomes, failure] :
        { std::pair { std::vector<platform::ChildOutcome> { { .status = 0 }, { .status = 1 } },
              "collector deadline" },
            std::pair { std::vector<platform::ChildOutcome> {
                            { .status = 15, .elapsed = platform::Seconds(2) }, { .status = 1 } },
                "collector deadline" },
            std::pair { std::vector<platform::ChildOutcome> { { .status = 15 }, { .status = 0 } },
                "collector nonzero exit" } }) {
        SelfTestBench other;
        other.children.outcomes.assign(outcomes.begin(), outcomes.end());
        EXPECT_EQ(other.run(), failure);
        EXPECT_EQ(other.printed.find("PASS: collector"), std::string::npos);
    }
}

TEST(SelfTest, TakesASnapshotOfAFileAndRefusesWhatIsNone)
{
    for (const auto& [text, failure] :
        { std::pair {
              R"({"ts":"x","procs":[{"name":"own","pid":"9","rss":1,"cpu":0,"grp":"g","cmd":"c"}]})", "" },
            std::pair { "[1]", "the snapshot isn't an object" },
            std::pair { "{", "the snapshot isn't JSON" } }) {
        SelfTestBench bench;
        bench.files.contents["/s.json"] = text;
        EXPECT_EQ(bench.run("/s.json"), failure);
        if (!*failure) {
            EXPECT_EQ(bench.delegate.snapshots().lastData()->procs.at(0).name, "own");
        }
    }
    SelfTestBench bench;
    EXPECT_EQ(bench.run("/none.json"), "the file can't be read: /none.json");
}

TEST(SelfTest, LeavesAPictureOfEachTabAndOfTheHintCardInAFolderThatIsThere)
{
    const QTemporaryDir folder;
    SelfTestBench bench;
    bench.environment.emplace("OSTREL_QA_IMAGES", folder.path().toStdString());
    bench.environment.emplace("OSTREL_THEME", "dark");
    ASSERT_EQ(bench.run(), "");
    EXPECT_EQ(QDir(folder.path()).entryList({ "*.png" }, QDir::Files, QDir::Name),
        (QStringList { "agents.png", "automations.png", "cleanup.png", "dashboard.png", "hint-card.png",
            "insights.png", "processes.png", "server.png", "settings.png", "system.png" }));
    const QImage picture(folder.filePath("settings.png"));
    EXPECT_EQ(picture.size(), QSize(760, 700));
    EXPECT_LT(picture.pixelColor(2, 350).redF(), 0.2F) << "in the theme that was asked for";

    SelfTestBench other;
    other.environment.emplace("OSTREL_QA_IMAGES", folder.filePath("none").toStdString());
    EXPECT_EQ(other.run().find("the picture can't be written: "), 0U);
}

} // namespace
