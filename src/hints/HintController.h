// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bar/Settings.h"
#include "core/LifeToken.h"
#include "core/PanelBody.h"
#include "core/PanelDoor.h"
#include "hints/CompanionPolicy.h"
#include "hints/HintStage.h"
#include "platform/Clock.h"
#include "platform/MainQueue.h"
#include "platform/Screens.h"
#include "platform/UserDefaults.h"
#include "readings/NativeTick.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

namespace ostrel {

/// The life of pressure hints: it asks the policy at each tick, puts the card up, and writes one receipt for
/// its coming and one for its end. A sample card leaves none. Main thread.
class HintController {
public:
    static constexpr std::string_view policyKey = "ostrel.hintPolicy";
    /// How long a card stays by itself.
    static constexpr platform::Seconds autoHide { 12 };
    /// From the card's coming to its first flash.
    static constexpr platform::Seconds firstFlash { 0.85 };

    /// All of it must outlive the controller.
    struct Owner {
        platform::UserDefaults& defaults;
        platform::MainQueue& mainQueue;
        const platform::Clock& clock;
        const platform::Screens& screens;
        const NativeTick& tick;
        Settings& settings;
        PanelDoor& panel;
        PanelBody& body;
        HintStage& stage;
        /// Where the bar item is; nothing while it has no place on screen, and then no hint has one either.
        std::function<std::optional<platform::Rect>()> itemFrame;
    };

    /// Takes up the stored policy; what can't be read there counts as none.
    explicit HintController(Owner owner);
    HintController(const HintController&) = delete;
    HintController& operator=(const HintController&) = delete;
    ~HintController();

    /// One tick: takes a hint away whose reason is gone, feeds the policy, and shows a hint if it says so.
    void considerCompanion();
    /// Puts a card up in place of any other; nothing while the bar item has no place.
    void showCompanion(bool preview);
    /// Ends a hint with a receipt of that state; a sample without one. Nothing without a card.
    void finishHint(std::string_view state);
    /// Takes a card off the screen without a receipt.
    void dismissCompanion();

    /// The panel is about to come on screen. `opening` unless it is there already.
    void panelWillShow(bool opening);
    /// Opens the panel on the processes, and acknowledges the hint.
    void hintInspect();
    void snoozeHint() { finishHint("snoozed"); }
    /// Turns hints on or off, and says so in the panel.
    void toggleHints();
    /// Shows a sample of the card, in place of the panel.
    void previewCompanion();
    /// A card on screen follows the theme.
    void applyTheme(ZOLThemePolicy::Mode mode);

    [[nodiscard]] const CompanionPolicy& hintPolicy() const { return hintPolicy_; }
    /// Whether a card is up.
    [[nodiscard]] bool hintShown() const { return hintPanel_ != nullptr; }
    [[nodiscard]] bool hintIsPreview() const { return hintIsPreview_; }

private:
    void saveHintPolicy();
    void scheduleHintFlashes(int level);
    void cardDismissed(std::string_view reason);
    [[nodiscard]] HintAnswers answers(std::uint64_t card);
    [[nodiscard]] int level() const;

    Owner owner_;
    CompanionPolicy hintPolicy_;
    CompanionPolicy::Gesture pressureGesture_;
    std::unique_ptr<HintWindow> hintPanel_;
    std::uint64_t card_ = 0; ///< counts the cards, so that what was planned for one doesn't reach the next
    bool hintIsPreview_ = false;
    LifeToken life_;
};

} // namespace ostrel
