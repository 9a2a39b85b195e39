// SPDX-License-Identifier: Apache-2.0
#include "design_views/ViewBench.h"

#include "design/controls/ZOLHintCard.h"
#include "design/voxel/ZOLVoxelModels.h"
#include "design/voxel/ZOLVoxelView.h"

#include <QScreen>

namespace {

using namespace ostrel;

/// A card in its panel, on screen, and all that it told.
struct Bench : DesignBench {
    explicit Bench(const std::vector<QString>& captions = { "inspect", "30m" })
    {
        std::vector<ZOLHintCard::Action> actions;
        for (const QString& caption : captions)
            actions.push_back({ caption, [this, caption] { told.push_back(caption), onAction(); } });
        auto made = std::make_unique<ZOLHintCard>(
            "title", "fact", actions, ZOLVoxelModels::ostrel(), services,
            [this](const QString& reason) { told.push_back(reason), onDismiss(); }, 12, 400);
        card = made.get();
        panel = ZOLHintCard::makePanel(std::move(made));
        card->present(*panel, { 30, 200 });
    }
    void wait(double seconds) { time.advance(platform::Seconds(seconds)); }

    std::vector<QString> told;
    std::function<void()> onAction = [] {};
    std::function<void()> onDismiss = [] {};
    ZOLHintCard* card = nullptr;
    std::unique_ptr<ZOLHintCard::Panel> panel;
};

const std::pair<std::function<void(Bench&)>, std::vector<QString>> dismissals[] {
    { [](Bench& b) { b.wait(12); }, { "expired" } },
    { [](Bench& b) { sendKey(*b.card, Qt::Key_Escape); }, { "escape" } },
    { [](Bench& b) { sendKey(b.card->markView(), Qt::Key_Escape); }, { "escape" } },
    { [](Bench& b) { sendKey(*b.card->buttons()[1], Qt::Key_Escape); }, { "escape" } },
    { [](Bench& b) { sendKey(*b.card->buttons()[0], Qt::Key_Return); }, { "inspect", "action:inspect" } },
    { [](Bench& b) { b.card->buttons()[1]->click(); }, { "30m", "action:30m" } },
};

TEST(ZOLHintCard, IsDismissedOnceByWhateverComesFirst)
{
    for (const auto& [dismiss, expected] : dismissals) {
        Bench bench;
        bench.wait(11.9);
        bench.card->cancelAutoHide();
        bench.wait(60);
        bench.card->startAutoHide();
        bench.wait(11.9);
        sendKey(*bench.card, Qt::Key_A);
        for (const int tag : { -1, 2 })
            bench.card->actionPressed(tag);
        EXPECT_TRUE(bench.told.empty());
        dismiss(bench);
        bench.card->dismiss("late");
        bench.card->startAutoHide();
        bench.wait(60);
        EXPECT_EQ(bench.told, expected);
    }
}

TEST(ZOLHintCard, WhateverItCallsMayDestroyItAndItsPanel)
{
    for (const auto& [dismiss, told] : dismissals)
        for (const bool inAction : { true, false })
            for (const bool cardAlone : { true, false }) {
                Bench bench;
                (inAction ? bench.onAction : bench.onDismiss)
                    = [&bench, cardAlone] { cardAlone ? delete bench.card : bench.panel.reset(); };
                dismiss(bench);
                bench.wait(60);
                EXPECT_EQ(bench.told.size(), inAction ? 1 : told.size());
            }
}

TEST(ZOLHintCard, ActionsBeyondTheThirdAreDroppedAndLongOnesShareTheRoom)
{
    testing::internal::CaptureStderr();
    const Bench bench({ "A", "a caption that is far too long", "another one that is even longer", "D" });
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find("ZOLHintCard: 4 actions given, showing the first 3\n"), std::string::npos) << said;
    const auto& buttons = bench.card->buttons();
    ASSERT_EQ(buttons.size(), 3U);
    EXPECT_EQ(buttons[0]->size(), QSize(56, 28));
    EXPECT_EQ(buttons[2]->mapTo(bench.card, QPoint(buttons[2]->width(), 0)).x(), 400 - ZOLHintCard::inset);
}

TEST(ZOLHintCard, ItIsAsHighAsItsTextsOfTwoLinesAtTheMost)
{
    Bench bench(std::vector<QString> {});
    const QString many = QString("many words ").repeated(40);
    EXPECT_EQ(bench.panel->size(), QSize(400, 72)) << "the mark";
    bench.card->update("a <b> title", many);
    const int higher = bench.panel->height();
    EXPECT_GT(higher, 72);
    EXPECT_NE(bench.card->markView().toolTip(), "a <b> title") << "it would be taken for markup";
    bench.card->update(many, std::nullopt);
    EXPECT_GT(bench.panel->height(), higher);
    EXPECT_LE(bench.panel->height(), 2 * 16 + 4 + 4 * 18);
}

TEST(ZOLHintCard, RisesIntoPlaceOrStandsThereAtOnce)
{
    for (const bool reduceMotion : { false, true }) {
        Bench bench; // on its way already
        auto& panel = *bench.panel;
        auto* const rise = panel.findChild<QVariantAnimation*>("zol-appear");
        rise->setCurrentTime(45);
        EXPECT_GT(panel.windowOpacity(), 0.6) << "fast at first";
        bench.workspace.setReduceMotion(reduceMotion);
        bench.card->present(panel, { 30, 200 });
        const int screen = QGuiApplication::primaryScreen()->geometry().height();
        const QPoint place(30, screen - 200 - panel.height());
        if (!reduceMotion) {
            rise->setCurrentTime(0);
            EXPECT_EQ(panel.pos(), place + QPoint(0, 6));
            EXPECT_EQ(panel.windowOpacity(), 0);
            rise->setCurrentTime(180);
        }
        EXPECT_EQ(panel.pos(), place);
        EXPECT_EQ(panel.windowOpacity(), 1);
        EXPECT_EQ(rise->state(), QAbstractAnimation::Stopped);
    }
    EXPECT_EQ(topLeftOf({ -400.4, 1000.6, 400, 92 }, QRect(1920, 100, 800, 600)), QPoint(1520, -393));
}

TEST(ZOLHintCardPanel, TakesTheKeyboardOnlyOnceSomebodyPressesIntoIt)
{
    Bench bench;
    QWindow* const window = bench.panel->windowHandle();
    EXPECT_TRUE(window->flags() & Qt::WindowDoesNotAcceptFocus);
    EXPECT_FALSE(bench.card->hasFocus());
    press(*window);
    EXPECT_TRUE(spinUntil([&] { return bench.card->hasFocus(); }));
}

} // namespace
