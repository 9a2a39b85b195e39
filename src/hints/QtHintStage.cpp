// SPDX-License-Identifier: Apache-2.0
#include "hints/QtHintStage.h"

#include "design/Appearance.h"
#include "design/OstrelStyle.h"
#include "design/Utf8.h"
#include "design/controls/FloatingPanel.h"
#include "design/controls/ZOLHintCard.h"
#include "design/controls/ZOLShellLabel.h"
#include "design/voxel/VoxelView.h"
#include "design/voxel/ZOLVoxelModels.h"
#include "design/voxel/ZOLVoxelView.h"
#include "hints/LegacyHintCard.h"

#include <utility>

namespace ostrel {

namespace {

/// The shared card's width, in points.
constexpr int sharedWidth = 400;

/// Of a view that may be on the way of an event to a handler, which ends it: it goes from the screen now, and
/// from memory in a later turn of the loop.
struct Later {
    void operator()(QWidget* view) const
    {
        view->hide();
        view->deleteLater();
    }
};

template <typename Panel>
class CardWindow : public HintWindow {
public:
    CardWindow(Panel* panel, platform::FloatingWindows& windows)
        : panel_(panel)
        , windows_(windows)
    {
    }

    [[nodiscard]] double width() const override { return panel_->width(); }
    [[nodiscard]] double height() const override { return panel_->height(); }

protected:
    [[nodiscard]] Panel& prepared()
    {
        windows_.prepare(*panel_, panel_->radius());
        return *panel_;
    }
    [[nodiscard]] Panel& panel() const { return *panel_; }

private:
    std::unique_ptr<Panel, Later> panel_;
    platform::FloatingWindows& windows_;
};

class LegacyWindow final : public CardWindow<FloatingPanel> {
public:
    LegacyWindow(LegacyHintCard* card, const HintText& text, platform::FloatingWindows& windows)
        : CardWindow(new FloatingPanel(*card, LegacyHintCard::radius, OstrelStyle::hair), windows)
        , voxel_(card->hintVoxel())
    {
        panel().setMessage(utf16(text.title), utf16(text.fact));
    }

    void present(const platform::Point& lowerLeft) override
    {
        FloatingPanel& panel = prepared();
        panel.setFrameOrigin(lowerLeft);
        panel.orderFrontRegardless();
        voxel_.resume();
    }

    void flash() override
    {
        // Its creature has a motion of its own.
    }

    void applyTheme(ZOLThemePolicy::Mode mode) override
    {
        setAppearance(panel(), mode);
        panel().update();
    }

private:
    VoxelView& voxel_; ///< the panel's
};

class SharedWindow final : public CardWindow<ZOLHintCardPanel> {
public:
    SharedWindow(std::unique_ptr<ZOLHintCard> card, platform::FloatingWindows& windows)
        : CardWindow(ZOLHintCard::makePanel(std::move(card)).release(), windows)
    {
        panel().setActivation([&windows, &panel = panel()] { windows.takeKeyboard(panel); });
    }

    void present(const platform::Point& lowerLeft) override
    {
        ZOLHintCardPanel& panel = prepared();
        panel.contentView()->present(panel, lowerLeft);
    }

    void flash() override
    {
        if (panel().isVisible())
            panel().contentView()->markView().gesture();
    }

    void applyTheme(ZOLThemePolicy::Mode) override
    {
        // It stands on a light plate in both.
    }
};

} // namespace

QtHintStage::QtHintStage(const MotionServices& motion, platform::FloatingWindows& windows)
    : motion_(motion)
    , windows_(windows)
{
}

std::unique_ptr<HintWindow> QtHintStage::legacyCard(const HintText& text, bool moves, HintAnswers answers)
{
    return std::make_unique<LegacyWindow>(new LegacyHintCard(text, moves, motion_, answers), text, windows_);
}

std::unique_ptr<HintWindow> QtHintStage::sharedCard(
    const HintText& text, bool moves, platform::Seconds autoHide, HintAnswers answers)
{
    std::vector<ZOLHintCard::Action> actions { { utf16(text.buttons[0].caption), std::move(answers.inspect) },
        { utf16(text.buttons[1].caption), std::move(answers.snooze) } };
    auto card = std::make_unique<ZOLHintCard>(
        utf16(text.title), utf16(text.fact), std::move(actions), ZOLVoxelModels::ostrel(), motion_,
        [told = std::move(answers.dismissed)](const QString& reason) { told(reason.toStdString()); },
        autoHide.count(), sharedWidth);
    card->setObjectName("hint-card");
    card->markView().setAssemblesOnAppear(moves);
    card->markView().setToolTip(plainToolTip(utf16(text.mark)));
    return std::make_unique<SharedWindow>(std::move(card), windows_);
}

} // namespace ostrel
