// SPDX-License-Identifier: Apache-2.0
#include "bar/BarItem.h"

#include "core/Version.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>

namespace ostrel {

namespace {

using namespace std::chrono_literals;

/// The mark's name in the icon theme.
constexpr const char* markName = "dev.quent.ostrel-symbolic";

/// What stands around the text, in points: with the mark and without.
constexpr double roomWithMark = 38;
constexpr double roomWithoutMark = 16;

/// A press that closed the panel must not open it again.
constexpr std::chrono::milliseconds reopenPause = 500ms;

/// The desktop takes its time to place an item: when to look where it came to lie.
constexpr std::array<platform::Seconds, 3> laterLooks { 2s, 15s, 60s };

} // namespace

BarItem::BarItem(Owner owner)
    : owner_(std::move(owner))
{
}

BarItem::~BarItem() { removeStatusItem(); }

void BarItem::setupStatusItem(std::function<platform::Menu()> menu)
{
    statusItem_
        = owner_.statusBar.makeItem(std::string(appIdentifier), std::string(barName), owner_.iconFolder);
    statusItem_->setMenuBuilder(std::move(menu));
    statusItem_->setPressHandler(
        life_.guard([this](const platform::StatusItemPress& press) { statusItemAction(press); }));
    owner_.stateFile.connect([this] { return state(); });
    updateStatusButton();
    for (const platform::Seconds delay : laterLooks)
        owner_.mainQueue.postAfter(delay, life_.guard([this] { owner_.stateFile.writeBarState(); }));
}

std::optional<platform::Rect> BarItem::frame() const
{
    const auto placement = statusItem_ ? statusItem_->placement() : std::nullopt;
    return placement ? std::optional(placement->frame) : std::nullopt;
}

void BarItem::removeStatusItem()
{
    if (!statusItem_)
        return;
    owner_.stateFile.connect({});
    statusItem_.reset();
}

void BarItem::updateStatusButton()
{
    if (!statusItem_)
        return;
    const BarReading now = reading();
    drawFace(now);
    setLength(desired_);
    face_.toolTip = barToolTip(now);
    face_.accessibilityHelp = barAccessibilityHelp(owner_.settings.hotkeyLabel());
    statusItem_->setFace(face_);
    owner_.stateFile.writeBarState();
}

void BarItem::drawFace(const BarReading& reading)
{
    const BarDisplayMode mode = owner_.settings.barDisplayMode;
    const BarParts& parts = owner_.settings.barParts;
    std::pair wanted(mode, barTitle(mode, parts, reading));
    if (drawn_ == wanted)
        return;
    const bool mark = showsMark(mode);
    const auto& title = wanted.second;
    face_.visible = mode != BarDisplayMode::hidden;
    face_.label = title;
    face_.labelGuide = barLabelGuide(mode, parts);
    face_.iconName = mark ? markName : "";
    face_.icon = mark ? owner_.artist.markPicture() : nullptr;
    face_.picture = showsValue(mode) ? owner_.artist.valuePicture({ mark, title, barFigures(parts, reading) })
                                     : face_.icon;
    desired_ = std::ceil(owner_.artist.titleWidth(title) + (mark ? roomWithMark : roomWithoutMark));
    drawn_ = std::move(wanted);
}

void BarItem::setLength(double desired)
{
    if (owner_.panel.shown()) {
        // The panel hangs from the item, which must not move under it.
        pendingBarLength_ = desired;
    } else if (std::abs(length_ - desired) >= 1) {
        length_ = desired;
        pendingBarLength_.reset();
    }
    face_.length = std::max(length_, 0.0);
}

void BarItem::applyPendingLength()
{
    if (!pendingBarLength_ || !statusItem_)
        return;
    length_ = *pendingBarLength_;
    pendingBarLength_.reset();
    face_.length = length_;
    statusItem_->setFace(face_);
}

void BarItem::setBarMode(BarDisplayMode mode)
{
    const bool hiding
        = mode == BarDisplayMode::hidden && owner_.settings.barDisplayMode != BarDisplayMode::hidden;
    if (hiding && !hiddenConfirmPending_) {
        hiddenConfirmPending_ = true;
        return;
    }
    hiddenConfirmPending_ = false;
    owner_.settings.storeBarMode(mode);
    updateStatusButton();
}

void BarItem::toggleBarPart(BarPart part)
{
    BarParts parts = owner_.settings.barParts;
    const std::string word(rawValue(part));
    if (parts.erase(word) == 0)
        parts.insert(word);
    if (parts.empty())
        parts.emplace(rawValue(BarPart::swap));
    owner_.settings.storeBarParts(parts);
    updateStatusButton();
}

void BarItem::confirmHiddenBar()
{
    hiddenConfirmPending_ = true;
    setBarMode(BarDisplayMode::hidden);
    owner_.body.renderBody();
}

void BarItem::cancelHiddenBar()
{
    hiddenConfirmPending_ = false;
    owner_.body.renderBody();
}

void BarItem::statusItemAction(const platform::StatusItemPress& press)
{
    if (press.secondary || press.control) {
        if (statusItem_)
            statusItem_->popUpMenu();
        return;
    }
    const platform::Instant now = owner_.clock.now();
    const platform::Instant closed = owner_.panel.lastClose();
    // A closing in the future is a clock that was set back, and no reason to refuse for long.
    const bool justClosed = closed <= now && now < closed + reopenPause;
    if (!owner_.panel.shown() && justClosed)
        return;
    owner_.panel.toggle();
}

std::string BarItem::title() const
{
    return barTitle(owner_.settings.barDisplayMode, owner_.settings.barParts, reading());
}

BarReading BarItem::reading() const
{
    BarReading reading { .stats = owner_.tick.native(),
        .cpu = owner_.tick.lastCPU(),
        .mcp = std::nullopt,
        .source = owner_.snapshots.backendLastSource() };
    if (const auto& data = owner_.snapshots.lastData())
        for (const auto& entry : data->fan)
            if (entry.key == "mcp" && !reading.mcp)
                reading.mcp = entry.count;
    return reading;
}

BarItemState BarItem::state() const
{
    const BarDisplayMode mode = owner_.settings.barDisplayMode;
    BarItemState state { .mode = mode, .length = length_, .placement = std::nullopt };
    if (statusItem_ && mode != BarDisplayMode::hidden)
        state.placement = statusItem_->placement();
    return state;
}

} // namespace ostrel
