// SPDX-License-Identifier: Apache-2.0
#include "hints/HintController.h"

#include "hints/HintPlace.h"

#include <utility>

namespace ostrel {

namespace {

/// Readings further apart than so many periods don't belong together.
constexpr double mostPeriods = 2.5;
/// The level that a sample is shown at.
constexpr int sampleLevel = 2;

CompanionPolicy storedPolicy(const platform::UserDefaults& defaults)
{
    const auto bytes = defaults.bytes(HintController::policyKey);
    return bytes ? CompanionPolicy::decoded(*bytes).value_or(CompanionPolicy {}) : CompanionPolicy {};
}

} // namespace

HintController::HintController(Owner owner)
    : owner_(std::move(owner))
    , hintPolicy_(storedPolicy(owner_.defaults))
{
}

HintController::~HintController() = default;

int HintController::level() const
{
    const auto& reading = owner_.tick.lastNative();
    return reading ? reading->pressureLevel : 0;
}

void HintController::considerCompanion()
{
    const bool enabled = owner_.settings.hintsEnabled;
    if (hintShown() && !hintIsPreview_ && (!enabled || !CompanionPolicy::elevated(level())))
        finishHint("suppressed");
    // After that, since a hint that has gone takes no room.
    const bool occupied = owner_.panel.shown() || hintShown();
    const bool due = hintPolicy_.observe(
        level(), owner_.clock.now(), owner_.tick.nativeInterval() * mostPeriods, enabled, occupied);
    saveHintPolicy();
    if (due)
        showCompanion(false);
}

void HintController::showCompanion(bool preview)
{
    const auto item = owner_.itemFrame();
    const auto displays = owner_.screens.all();
    const auto display = item ? platform::displayOf(*item, displays) : std::nullopt;
    if (!display)
        return;
    dismissCompanion();
    hintIsPreview_ = preview;
    if (!preview) {
        hintPolicy_.record("presented", owner_.clock.now());
        saveHintPolicy();
    }
    const std::uint64_t card = ++card_;
    const bool moves = owner_.settings.motionEnabled;
    if (owner_.settings.dashboardDogEnabled) {
        hintPanel_ = owner_.stage.legacyCard(legacyHintText(preview, level()), moves, answers(card));
        owner_.mainQueue.postAfter(autoHide, life_.guard([this, card] {
            if (card == card_)
                finishHint("expired");
        }));
    } else {
        hintPanel_
            = owner_.stage.sharedCard(sharedHintText(preview, level()), moves, autoHide, answers(card));
    }
    hintPanel_->present(
        hintPlace(hintPanel_->width(), hintPanel_->height(), *item, displays[*display].visible));
    scheduleHintFlashes(preview ? sampleLevel : level());
}

HintAnswers HintController::answers(std::uint64_t card)
{
    return { .inspect = life_.guard([this] { hintInspect(); }),
        .snooze = life_.guard([this] { snoozeHint(); }),
        .dismissed = life_.guard([this, card](std::string_view reason) {
            if (card == card_)
                cardDismissed(reason);
        }) };
}

void HintController::cardDismissed(std::string_view reason)
{
    // An answer has ended the hint by itself already.
    if (reason == "expired")
        finishHint("expired");
    else if (reason == "escape")
        finishHint("dismissed");
}

void HintController::finishHint(std::string_view state)
{
    if (hintShown() && !hintIsPreview_) {
        hintPolicy_.record(state, owner_.clock.now());
        saveHintPolicy();
    }
    dismissCompanion();
}

void HintController::dismissCompanion()
{
    ++card_;
    hintPanel_.reset();
}

void HintController::saveHintPolicy()
{
    const std::string bytes = hintPolicy_.encoded();
    if (owner_.defaults.bytes(policyKey) != bytes)
        owner_.defaults.setBytes(policyKey, bytes);
}

void HintController::scheduleHintFlashes(int level)
{
    for (int i = 0; i < CompanionPolicy::Gesture::flashes(level); ++i)
        owner_.mainQueue.postAfter(
            firstFlash + i * CompanionPolicy::Gesture::beat, life_.guard([this, card = card_] {
                if (card == card_ && hintPanel_)
                    hintPanel_->flash();
            }));
}

void HintController::panelWillShow(bool opening)
{
    if (opening)
        pressureGesture_.reset();
    if (hintShown())
        finishHint("suppressed");
}

void HintController::hintInspect()
{
    finishHint("acknowledged");
    owner_.panel.show();
    owner_.body.switchMode(OstrelMode::processes);
}

void HintController::toggleHints()
{
    owner_.settings.flipHints();
    if (!owner_.settings.hintsEnabled)
        finishHint("suppressed");
    owner_.body.renderBody();
}

void HintController::previewCompanion()
{
    owner_.panel.close("preview-companion");
    showCompanion(true);
}

void HintController::applyTheme(ZOLThemePolicy::Mode mode)
{
    if (hintPanel_)
        hintPanel_->applyTheme(mode);
}

} // namespace ostrel
