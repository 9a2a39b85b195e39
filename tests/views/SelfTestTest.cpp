// SPDX-License-Identifier: Apache-2.0
#include "app/SelfTest.h"

#include "views/OpenTab.h"

#include "design/Appearance.h"
#include "design/ZOLAppMarkView.h"

#include <QDir>
#include <QImage>
#include <QSet>
#include <QTemporaryDir>

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

std::function<void(QWidget&)> without(const char* name)
{
    return [name](QWidget& root) {
        if (QWidget* view = root.findChild<QWidget*>(name))
            view->setObjectName("elsewhere");
    };
}

TEST(SelfTest, NamesTheFirstCheckThatDoesNotHoldAndPrintsNoFurtherLine)
{
    const Disturbance disturbances[] {
        { "combination", [](QWidget& window) { window.resize(800, 700); }, "window size", "PASS: 45" },
        { "combination", without("pin-panel"), "header buttons", "PASS: 45" },
        { "combination",
            [](QWidget& window) { window.findChild<QWidget*>("header-character")->setFixedHeight(30); },
            "header character", "PASS: 45" },
        { "combination", without("hint-esc"), "footer", "PASS: 45" },
        { "combination", [](QWidget& window) { window.show(); }, "hidden window: it is on screen",
            "PASS: 45" },
        { "combination",
            [](QWidget& window) {
                new ZOLAppMarkView(ZOLAppMark::ostrel, 40, window.findChild<QScrollArea*>()->widget());
            },
            "compact dashboard contains no decorative hero", "PASS: 45" },
        { "hint card", [](QWidget& panel) { panel.resize(399, panel.height()); }, "hint card: size",
            "PASS: shared hint card" },
        { "hotkey recorder", without("hotkey-choice-3"), "hotkey recorder: default and choices",
            "PASS: hotkey recorder" },
        { "hotkey recorder", without("hotkey-field"), "hotkey recorder: the field at rest",
            "PASS: hotkey recorder" },
        { "doors",
            [](QWidget& window) {
                for (OstrelButton* button : all<OstrelButton>(window))
                    if (button->caption() == "review cleanup")
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

TEST(SelfTest, ARunnerWithoutADeadlineOrAFailureFails)
{
    const platform::Seconds late(2);
    const std::tuple<platform::ChildOutcome, platform::ChildOutcome, const char*> cases[] {
        { { .status = 0 }, { .status = 1 }, "collector deadline" },
        { { .status = 15, .elapsed = late }, { .status = 1 }, "collector deadline" },
        { { .status = 15 }, { .status = 0 }, "collector nonzero exit" },
    };
    for (const auto& [first, second, failure] : cases) {
        SelfTestBench bench;
        bench.children.outcomes = { first, second };
        EXPECT_EQ(bench.run(), failure);
        EXPECT_EQ(bench.printed.find("PASS: collector"), std::string::npos);
    }
}

TEST(SelfTest, TakesASnapshotOfAFileAndRefusesWhatIsNone)
{
    for (const auto& [text, failure] :
        { std::pair(
              R"({"ts":"x","procs":[{"name":"own","pid":"9","rss":1,"cpu":0,"grp":"g","cmd":"c"}]})", ""),
            { "[1]", "the snapshot isn't an object" }, { "{", "the snapshot isn't JSON" } }) {
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
