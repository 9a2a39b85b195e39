// SPDX-License-Identifier: Apache-2.0
#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "design/controls/FloatingPanel.h"
#include "design/controls/ZOLHintCard.h"
#include "design/voxel/VoxelView.h"
#include "design/voxel/ZOLVoxelView.h"
#include "design_views/ViewBench.h"
#include "hints/QtHintStage.h"

#include "support/FakeFloatingWindows.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>

namespace {

using namespace ostrel;

[[maybe_unused]] auto* const qt = testing::AddGlobalTestEnvironment(new QtEnvironment);

struct Bench : DesignBench {
    [[nodiscard]] HintAnswers answers()
    {
        return { .inspect = [this] { told.emplace_back("inspect"), window.reset(); },
            .snooze = [this] { told.emplace_back("snooze"), window.reset(); },
            .dismissed = [this](std::string_view reason) { told.emplace_back(reason); } };
    }
    void make(bool legacy, const HintText& text, bool moves = false)
    {
        window = legacy ? stage.legacyCard(text, moves, answers())
                        : stage.sharedCard(text, moves, platform::Seconds(12), answers());
    }
    /// The card's window, wherever the stage keeps it.
    [[nodiscard]] static FloatingPanel* panel()
    {
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (auto* panel = dynamic_cast<FloatingPanel*>(widget); panel && panel->isVisible())
                return panel;
        return nullptr;
    }
    /// The pixel of the card's ground, next to its left edge.
    [[nodiscard]] static QColor ground()
    {
        return panel()->grab().toImage().pixelColor(4, panel()->height() / 2);
    }

    FakeFloatingWindows windows;
    QtHintStage stage { services, windows };
    std::unique_ptr<HintWindow> window;
    std::vector<std::string> told;
};

TEST(HintCards, BothAreOneWindowWithoutTheKeyboardThatTellsItsMessage)
{
    for (const bool legacy : { true, false }) {
        Bench bench;
        bench.make(legacy, legacy ? legacyHintText(false, 4) : sharedHintText(false, 4), true);
        bench.window->present({ 100, 100 });
        FloatingPanel* const panel = Bench::panel();
        ASSERT_TRUE(panel);
        EXPECT_EQ(bench.windows.prepared, 1);
        EXPECT_EQ(panel->size(), QSize(legacy ? 338 : 400, static_cast<int>(bench.window->height())));
        EXPECT_TRUE(panel->testAttribute(Qt::WA_ShowWithoutActivating));
        EXPECT_TRUE(panel->windowFlags() & Qt::WindowDoesNotAcceptFocus);
        EXPECT_FALSE(panel->mask().contains(QPoint(0, 0))) << "round corners";
        QAccessibleInterface* const said = QAccessible::queryAccessibleInterface(panel);
        EXPECT_EQ(said->role(), QAccessible::AlertMessage);
        EXPECT_EQ(said->text(QAccessible::Name), QString::fromUtf8("OS pressure · critical"));
        EXPECT_TRUE(said->text(QAccessible::Description).contains("elevated"));
        for (const QLabel* label : panel->findChildren<QLabel*>())
            EXPECT_TRUE(panel->rect().contains(QRect(label->mapTo(panel, QPoint()), label->size())));

        std::vector<QAbstractButton*> buttons;
        for (QAbstractButton* button : panel->findChildren<QAbstractButton*>())
            buttons.push_back(button);
        ASSERT_EQ(buttons.size(), 2u);
        if (legacy) {
            EXPECT_EQ(buttons[0]->toolTip(), "open the workloads behind this hint and acknowledge it");
            EXPECT_EQ(buttons[1]->toolTip(), "snooze this hint for 30 minutes");
        }
        buttons[legacy ? 1 : 0]->click();
        EXPECT_EQ(bench.told.front(), legacy ? "snooze" : "inspect") << "and the card may go meanwhile";
        EXPECT_FALSE(Bench::panel());
    }
}

TEST(HintCards, TheLegacyCardFollowsTheThemeAndTheSharedOneStaysLight)
{
    for (const bool legacy : { true, false }) {
        Bench bench;
        bench.make(legacy, legacy ? legacyHintText(true, 0) : sharedHintText(true, 0));
        bench.window->applyTheme(ZOLThemePolicy::Mode::light);
        bench.window->present({ 100, 100 });
        std::string said;
        for (const QLabel* label : Bench::panel()->findChildren<QLabel*>())
            said += label->text().toStdString() + "|";
        for (const auto* button : Bench::panel()->findChildren<QAbstractButton*>())
            said += button->accessibleName().toStdString() + ": " + button->toolTip().toStdString() + "|";
        EXPECT_EQ(said,
            legacy
                ? "Companion preview|This is a preview. Inspect opens your workload view.|inspect: open the "
                  "workloads behind this hint and acknowledge it|close: close the sample card|"
                : "Companion preview|This is a preview. Inspect opens workloads.|inspect: |close: |");
        const QColor light = Bench::ground();
        bench.window->applyTheme(ZOLThemePolicy::Mode::dark);
        EXPECT_EQ(Bench::ground() == light, !legacy);
        if (legacy) {
            EXPECT_EQ(Bench::ground(), qColor(OstrelStyle::bg.in(ZOLThemePolicy::Mode::dark)));
        }
    }
}

TEST(HintCards, TheSharedCardHasItsMarkAndEndsByItself)
{
    Bench bench;
    bench.make(false, sharedHintText(false, 2));
    bench.window->present({ 100, 100 });
    const auto* const panel = dynamic_cast<ZOLHintCardPanel*>(Bench::panel());
    ASSERT_TRUE(panel);
    const ZOLVoxelView& mark = panel->contentView()->markView();
    EXPECT_FALSE(mark.assemblesOnAppear()) << "motion is off";
    EXPECT_EQ(mark.toolTip().toStdString(), "OSTREL · pressure warning");
    bench.time.advance(platform::Seconds(12));
    EXPECT_EQ(bench.told, (std::vector<std::string> { "expired" }));
}

} // namespace
