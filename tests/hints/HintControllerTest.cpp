// SPDX-License-Identifier: Apache-2.0
#include "hints/HintController.h"
#include "hints/HintPlace.h"

#include "support/FakePanel.h"
#include "support/FakeScreens.h"
#include "support/StateBench.h"

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using platform::Rect;
using platform::Seconds;

/// Keeps what windows were asked for, and lets the test answer for them.
struct FakeStage final : HintStage {
    struct Window final : HintWindow {
        explicit Window(FakeStage& owner)
            : stage(owner)
        {
        }
        Window(const Window&) = delete;
        Window& operator=(const Window&) = delete;
        ~Window() override { stage.calls.emplace_back("gone"); }
        [[nodiscard]] double width() const override { return 338; }
        [[nodiscard]] double height() const override { return 174; }
        void present(const platform::Point& lowerLeft) override { stage.place = lowerLeft; }
        void flash() override { stage.calls.emplace_back("flash"); }
        void applyTheme(ZOLThemePolicy::Mode) override { stage.calls.emplace_back("theme"); }
        FakeStage& stage;
    };

    std::unique_ptr<HintWindow> legacyCard(const HintText& text, bool, HintAnswers told) override
    {
        return card("legacy", text, std::move(told));
    }
    std::unique_ptr<HintWindow> sharedCard(
        const HintText& text, bool, Seconds time, HintAnswers told) override
    {
        EXPECT_EQ(time, Seconds(12));
        return card("shared", text, std::move(told));
    }
    std::unique_ptr<HintWindow> card(const std::string& kind, const HintText& text, HintAnswers told)
    {
        calls.push_back(kind + " " + text.title + " | " + text.fact + " | " + text.buttons[0].caption + " "
            + text.buttons[1].caption);
        answers = std::move(told);
        return std::make_unique<Window>(*this);
    }

    std::vector<std::string> calls;
    HintAnswers answers;
    platform::Point place;
};

struct Door final : PanelDoor {
    void show() override
    {
        calls.emplace_back("show");
        open = true;
    }
    void close(std::string_view reason) override
    {
        calls.emplace_back(reason);
        open = false;
    }
    void toggle() override { open = !open; }
    void showTestbed() override { open = true; }
    [[nodiscard]] bool shown() const override { return open; }
    [[nodiscard]] platform::Instant lastClose() const override { return platform::distantPast; }
    bool open = false;
    std::vector<std::string> calls;
};

struct Bench : StateBench {
    Bench()
    {
        screens.screens = { { "Main", { 0, 0, 1440, 900 }, { 0, 0, 1440, 875 } } };
        screens.main = 0;
    }
    /// Ticks every five seconds at a level for so long.
    void pass(double seconds, int level)
    {
        kernel.reading.pressureLevel = level;
        for (double gone = 0; gone < seconds; gone += 5) {
            time.advance(Seconds(5));
            tick.tickNative();
            hints.considerCompanion();
        }
    }
    [[nodiscard]] std::vector<std::string> receipts() const
    {
        std::vector<std::string> states;
        for (const auto& receipt : hints.hintPolicy().receipts)
            states.push_back(receipt.state);
        return states;
    }
    std::vector<std::string> calls() { return std::exchange(stage.calls, {}); }

    FakeScreens screens;
    FakePanel body;
    Door door;
    FakeStage stage;
    std::optional<Rect> item = Rect { 1000, 875, 40, 25 };
    /// One more run of the program, over the same settings.
    HintController start()
    {
        return HintController(
            { defaults, time, time, screens, tick, settings, door, body, stage, [this] { return item; } });
    }
    HintController hints = start();
};

using Texts = std::vector<std::string>;

TEST(HintController, EachWayToEndAHintLeavesExactlyItsReceipt)
{
    const std::vector<std::pair<const char*, void (*)(Bench&)>> ends {
        { "acknowledged", [](Bench& b) { b.stage.answers.inspect(); } },
        { "snoozed", [](Bench& b) { b.stage.answers.snooze(); } },
        { "expired", [](Bench& b) { b.time.advance(Seconds(12)); } },
        { "suppressed", [](Bench& b) { b.hints.panelWillShow(true); } },
        { "suppressed", [](Bench& b) { b.hints.toggleHints(); } },
        { "suppressed", [](Bench& b) { b.pass(5, 1); } },
        { "suppressed", [](Bench& b) { b.pass(5, 0); } },
    };
    for (const auto& [state, end] : ends) {
        Bench bench;
        bench.pass(20, 2);
        EXPECT_FALSE(bench.hints.hintShown());
        bench.pass(5, 2);
        ASSERT_TRUE(bench.hints.hintShown()) << state;
        end(bench);
        EXPECT_FALSE(bench.hints.hintShown()) << state;
        bench.time.advance(Seconds(60));
        EXPECT_EQ(bench.receipts(), (Texts { "presented", state }));
    }
}

TEST(HintController, TheSharedCardTellsItsOwnEndAndOnlyOfItself)
{
    for (const auto& [reason, state] :
        std::vector<std::pair<const char*, Texts>> { { "expired", { "presented", "expired" } },
            { "escape", { "presented", "dismissed" } }, { "action:inspect", { "presented" } } }) {
        Bench bench;
        bench.settings.dashboardDogEnabled = false;
        bench.pass(25, 4);
        const HintAnswers answers = bench.stage.answers;
        answers.dismissed(reason);
        EXPECT_EQ(bench.receipts(), state) << reason;
        bench.hints.showCompanion(true);
        answers.dismissed("expired");
        EXPECT_TRUE(bench.hints.hintShown()) << "a late word of the card before";
        EXPECT_EQ(bench.receipts(), state);
    }
}

TEST(HintController, SaysWhatHappenedAndFlashesByItsLevel)
{
    Bench bench;
    bench.pass(25, 4);
    EXPECT_EQ(bench.calls(),
        (Texts { "legacy OS pressure · critical | Pressure has stayed elevated. Inspect workloads before "
                 "choosing an "
                 "action. | inspect 30m" }));
    bench.time.advance(Seconds(0.84));
    EXPECT_EQ(bench.calls(), Texts {});
    bench.time.advance(Seconds(0.02));
    EXPECT_EQ(bench.calls(), (Texts { "flash" }));
    bench.time.advance(Seconds(0.4));
    EXPECT_EQ(bench.calls(), (Texts { "flash" }));
    bench.hints.applyTheme(ZOLThemePolicy::Mode::dark);
    bench.time.advance(Seconds(20));
    EXPECT_EQ(bench.calls(), (Texts { "theme", "gone" }));

    bench.settings.dashboardDogEnabled = false;
    bench.hints.previewCompanion();
    EXPECT_EQ(bench.calls(),
        (Texts { "shared Companion preview | This is a preview. Inspect opens workloads. | inspect close" }));
    bench.hints.showCompanion(false);
    EXPECT_EQ(bench.calls(),
        (Texts { "gone",
            "shared OS pressure · critical | Pressure stayed elevated. Inspect workloads. | inspect 30m" }))
        << "never two at once";
    bench.hints.finishHint("dismissed");
    bench.time.advance(Seconds(5));
    EXPECT_EQ(bench.calls(), (Texts { "gone" })) << "a card that is gone doesn't flash";
}

TEST(HintController, ASampleLeavesNoReceiptAndHoldsItsPlace)
{
    Bench bench;
    bench.door.open = true;
    bench.hints.previewCompanion();
    EXPECT_EQ(bench.door.calls, (Texts { "preview-companion" })) << "in place of the panel";
    EXPECT_TRUE(bench.hints.hintShown());
    bench.kernel.reading.pressureLevel = 1;
    bench.tick.tickNative();
    bench.hints.considerCompanion();
    EXPECT_TRUE(bench.hints.hintShown()) << "calm takes no sample away";
    bench.time.advance(Seconds(12));
    EXPECT_FALSE(bench.hints.hintShown());
    bench.hints.previewCompanion();
    bench.stage.answers.snooze();
    bench.hints.previewCompanion();
    bench.stage.answers.inspect();
    EXPECT_EQ(bench.door.calls.back(), "show");
    EXPECT_EQ(bench.body.tab, OstrelMode::processes);
    EXPECT_EQ(bench.receipts(), Texts {});
    EXPECT_EQ(bench.hints.hintPolicy().snoozedUntil, std::nullopt);
}

TEST(HintController, WithoutAPlaceNothingIsShownOrRecordedUntilThereIsOne)
{
    Bench bench;
    const auto item = std::exchange(bench.item, std::nullopt);
    bench.pass(60, 2);
    EXPECT_EQ(bench.receipts(), Texts {});
    bench.item = item;
    const auto screens = std::exchange(bench.screens.screens, {});
    bench.pass(5, 2);
    EXPECT_EQ(bench.receipts(), Texts {});
    bench.screens.screens = screens;
    bench.pass(5, 2);
    EXPECT_EQ(bench.receipts(), (Texts { "presented" }));
}

TEST(HintController, WaitsForThePanelAndWritesOnlyWhatChanged)
{
    Bench bench;
    bench.door.open = true;
    bench.pass(40, 2);
    EXPECT_FALSE(bench.hints.hintShown());
    bench.door.open = false;
    bench.pass(5, 2);
    EXPECT_TRUE(bench.hints.hintShown()) << "the run went on meanwhile";
    bench.hints.snoozeHint();
    const auto stored = bench.defaults.bytes(HintController::policyKey);
    ASSERT_TRUE(stored);
    const int writes = bench.defaults.writes;
    bench.pass(120, 2);
    EXPECT_EQ(bench.defaults.writes, writes) << "a quiet tick touches no file";
    EXPECT_EQ(bench.start().hintPolicy().encoded(), *stored);
    bench.defaults.setBytes(HintController::policyKey, "{\"receipts\":[]}");
    EXPECT_EQ(bench.start().hintPolicy(), CompanionPolicy {});
    EXPECT_EQ(bench.defaults.bytes(HintController::policyKey), "{\"receipts\":[]}") << "until the next save";
}

TEST(HintController, ACardThatSleepsOrSeesTheClockSetStaysForTheRestOfItsTime)
{
    for (const double jump : { 36000.0, -36000.0 }) {
        Bench bench;
        bench.pass(25, 2);
        bench.time.advance(Seconds(1));
        bench.time.jump(Seconds(jump));
        bench.tick.tickNative();
        bench.hints.considerCompanion();
        EXPECT_TRUE(bench.hints.hintShown()) << jump;
        bench.time.advance(Seconds(jump < 0 ? 12 - jump : 12));
        EXPECT_FALSE(bench.hints.hintShown()) << jump;
        EXPECT_EQ(bench.receipts(), (Texts { "presented", "expired" })) << jump;
    }
}

TEST(HintController, HintsThatAreSwitchedOffMidwaySpendTheEpisode)
{
    Bench bench;
    bench.pass(25, 2);
    bench.hints.toggleHints();
    EXPECT_EQ(bench.defaults.boolean("ostrel.hints"), false);
    EXPECT_EQ(bench.body.calls.back(), "render");
    bench.hints.toggleHints();
    bench.pass(4000, 2);
    EXPECT_EQ(bench.receipts(), (Texts { "presented", "suppressed" }));
    bench.pass(5, 1);
    bench.pass(25, 2);
    EXPECT_EQ(bench.receipts(), (Texts { "presented", "suppressed", "presented" }));
}

TEST(HintPlace, HangsFromTheItemWithinTheFreeAreaAndStandsOnBarsBelow)
{
    struct Case {
        Rect item, visible;
        platform::Point place;
    };
    for (const auto& [item, visible, place] :
        std::vector<Case> {
            { { 1000, 875, 40, 25 }, { 0, 0, 1440, 875 }, { 851, 691 } }, // below, centred
            { { 1400, 875, 40, 25 }, { 0, 0, 1440, 875 }, { 1094, 691 } }, // against the right margin
            { { 0, 875, 40, 25 }, { 0, 0, 1440, 875 }, { 8, 691 } }, // the left one
            { { 100, 875, 40, 25 }, { 0, 0, 300, 875 }, { -46, 691 } }, // too narrow: the right one wins
            { { 1000, 885, 40, 10 }, { 0, 0, 1440, 870 }, { 851, 696 } }, // an item that doesn't fill its bar
            { { 1000, 0, 40, 30 }, { 0, 30, 1440, 870 }, { 851, 40 } }, // a bar below
            { { -900, 900, 40, 24 }, { -1280, 200, 1280, 700 }, { -1049, 716 } }, // a second display
        }) {
        EXPECT_EQ(hintPlace(338, 174, item, visible), place) << item.x << ' ' << item.y;
    }
}

} // namespace
