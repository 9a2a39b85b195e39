// SPDX-License-Identifier: Apache-2.0
#include "panel/PanelFrame.h"

#include "automations/AutomationsView.h"
#include "core/Version.h"
#include "design/Appearance.h"
#include "design/OstrelStyle.h"
#include "design/TabTransition.h"
#include "design/Utf8.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLAppHeader.h"
#include "design/controls/ZOLFooterLine.h"
#include "design/controls/ZOLPinButton.h"
#include "design/controls/ZOLShellButton.h"
#include "design/controls/ZOLShellLabel.h"
#include "design/controls/ZOLTabStrip.h"
#include "design/controls/ZOLThemeButton.h"
#include "design/voxel/ZOLVoxelModels.h"
#include "design/voxel/ZOLVoxelView.h"
#include "janitor/CleanupView.h"
#include "panel/BodyScreen.h"
#include "panel/DashboardTab.h"
#include "panel/HelpOverlay.h"
#include "panel/InsightsTab.h"
#include "panel/NoticeScreens.h"
#include "panel/PanelRootView.h"
#include "panel/PanelSize.h"
#include "panel/ReadoutText.h"
#include "panel/RetiredViews.h"
#include "panel/SessionsTab.h"
#include "panel/SettingsText.h"
#include "panel/SlimScrollBar.h"
#include "panel/SystemTab.h"
#include "panel/WorkloadsTab.h"
#include "sessions/ServerView.h"

#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr int spacing = 8;
constexpr int headerMarkSize = 40;
constexpr int tabWidth = 80;
constexpr int lowestBody = 320;
constexpr int readoutLines = 2;
constexpr platform::Seconds throttle { 2 };

/// The tab strip's ids are the tabs' titles.
std::string idOf(OstrelMode mode) { return std::string(words(mode).title); }

} // namespace

PanelFrame::PanelFrame(PanelState state, const Services& services, LiveRegistry& live)
    : state_(std::move(state))
    , services_(services)
    , live_(live)
    , retired_(std::make_unique<RetiredViews>(services.motion.mainQueue, services.alerts))
{
}

PanelFrame::~PanelFrame() = default;

void PanelFrame::setActions(Actions actions) { actions_ = std::move(actions); }

void PanelFrame::setSettings(const SettingsServices& settings) { settings_.emplace(settings); }

QWidget* PanelFrame::rootView() const { return root_; }

QWidget* PanelFrame::makeContent()
{
    focusToRestore_ = root_ ? FocusMemory::of(*root_) : std::nullopt;
    scrollToRestore_ = scroll_ ? std::optional(scroll_->verticalScrollBar()->value()) : std::nullopt;
    // The frame goes with its owner; what may have asked a question waits for the answer.
    if (scroll_)
        retired_->retire(scroll_->takeWidget());
    const auto escape = [this](std::string_view reason) {
        if (!dismissHelpOverlay(true))
            actions_.close(reason);
    };
    root_ = new PanelRootView({ .switchMode = [this](OstrelMode mode) { switchMode(mode); },
        .escape = escape,
        .close = actions_.close,
        .help = [this] { showHelpOverlay(); } });
    setAppearance(*root_, OstrelStyle::theme(services_.defaults));
    root_->resize(panelWidth, panelHeight);
    auto* column = new QVBoxLayout(root_);
    column->setContentsMargins(panelInset, panelInset, panelInset, panelInset);
    column->setSpacing(spacing);
    column->addWidget(makeHeader());
    column->addWidget(separator(contentWidth));
    column->addWidget(makeStrip());
    readout_ = wrappingLabel("loading…", 11, QFont::DemiBold, OstrelStyle::ink, contentWidth);
    readout_->setMaximumLines(readoutLines);
    column->addWidget(readout_);
    column->addWidget(separator(contentWidth));
    column->addWidget(makeBody(), 1);
    column->addWidget(separator(contentWidth));
    column->addWidget(makeFooter());
    return root_;
}

QWidget* PanelFrame::makeHeader()
{
    header_ = new ZOLAppHeader({ .mark = ZOLAppMark::ostrel,
                                   .name = "OSTREL",
                                   .status = "local + server · a little more room to think",
                                   .version = utf16(fmt::format("{} · {}", appVersion, appBuild)),
                                   .onSettings = [this] { switchMode(OstrelMode::settings); },
                                   .pin = new ZOLPinButton(state_.settings.pinned, actions_.setPinned),
                                   .onClose = [close = actions_.close] { close("x"); } },
        contentWidth);
    header_->settingsButton()->setActive(mode_ == OstrelMode::settings);
    installHeaderCharacter(*header_);
    return header_;
}

void PanelFrame::installHeaderCharacter(ZOLAppHeader& header) const
{
    auto* character = new ZOLVoxelView(ZOLVoxelModels::ostrel(), services_.motion);
    character->setFixedSize(headerMarkSize, headerMarkSize);
    character->setPadding(0);
    character->setShowsShadow(false);
    character->setAssemblesOnAppear(state_.settings.motionEnabled);
    character->setAccessibleName("OSTREL character");
    character->setObjectName("header-character");
    character->setToolTip("OSTREL · click flashes the red core");
    header.replaceMark(character);
}

QWidget* PanelFrame::makeStrip()
{
    std::vector<ZOLTabStrip::Tab> tabs;
    for (const OstrelModeWords& words : ostrelModes())
        if (words.mode != OstrelMode::settings)
            tabs.push_back({ idOf(words.mode), utf16(words.title), utf16(words.hint) });
    strip_ = new ZOLTabStrip(
        std::move(tabs), idOf(mode_), contentWidth, tabWidth, [this](const std::string& id) {
            for (const OstrelModeWords& words : ostrelModes())
                if (words.title == id)
                    return switchMode(words.mode);
        });
    if (mode_ == OstrelMode::settings)
        strip_->selectNone();
    return strip_;
}

QWidget* PanelFrame::makeBody()
{
    scroll_ = new QScrollArea(root_);
    scroll_->setFrameShape(QFrame::NoFrame);
    scroll_->setWidgetResizable(true);
    scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll_->setFocusPolicy(Qt::NoFocus);
    scroll_->setMinimumHeight(lowestBody);
    scroll_->setWidget(new QWidget);
    root_->setScrollArea(scroll_);
    // Owned by the root.
    new SlimScrollBar(*scroll_);
    return scroll_;
}

QWidget* PanelFrame::makeFooter() const
{
    const std::string hotkey = state_.settings.hotkeyLabel();
    return new ZOLFooterLine(
        { .keys = utf16(fmt::format("1–8 tabs · 9 settings · / keys · {} toggle", hotkey)),
            .status = utf16(fmt::format("{} · on this Mac · refreshes while open", appVersion)),
            .theme = new ZOLThemeButton(OstrelStyle::theme(services_.defaults), actions_.setTheme),
            .apps = actions_.openCatalogue },
        contentWidth);
}

bool PanelFrame::shown() const { return root_ && root_->isVisible(); }

void PanelFrame::renderBody()
{
    lastBodyRenderAt_ = services_.clock.now();
    if (!scroll_)
        return;
    live_.clear();
    const int scrolledTo = scroll_->verticalScrollBar()->value();
    const auto focus = focusToKeep();
    scroll_->setUpdatesEnabled(false);
    auto* page = new QWidget;
    auto* body = new QVBoxLayout(page);
    body->setContentsMargins(0, 0, 0, 0);
    body->setSpacing(0);
    fillBody(*body);
    body->addStretch(1);
    if (focus)
        root_->setFocus();
    retired_->retire(scroll_->takeWidget());
    scroll_->setWidget(page);
    if (actions_.rendered)
        actions_.rendered();
    page->layout()->activate();
    scroll_->setUpdatesEnabled(true);
    scroll_->verticalScrollBar()->setValue(scrolledTo);
    // Long lists hold what is in view.
    focusToReturn_ = focus && !focus->restore(*page) ? focus : std::nullopt;
    if (const auto before = std::exchange(scrollToRestore_, std::nullopt))
        scrollBody(*before);
}

std::optional<FocusMemory> PanelFrame::focusToKeep() const
{
    if (const auto focus = FocusMemory::of(*scroll_->widget()))
        return focus;
    return root_->window()->focusWidget() == root_ ? focusToReturn_ : std::nullopt;
}

void PanelFrame::fillBody(QVBoxLayout& body)
{
    const auto& data = state_.snapshots.lastData();
    const BodyChoice choice = chooseBody(mode_, data, state_.snapshots.backendLastSource());
    if (!choice.readout.empty())
        set(choice.readout);
    renderNotice(body, choice.screen, state_.snapshots.backendState(),
        [&snapshots = state_.snapshots] { snapshots.fetchPythonData(); });
    if (choice.screen != BodyScreen::tab && choice.screen != BodyScreen::stale)
        return;
    switch (mode_) {
    case OstrelMode::overview:
        return renderOverview(body, *data, state_, services_.automations, live_, *this);
    case OstrelMode::system:
        return renderSystem(body, *data, state_, services_.processInfo, services_.motion, live_);
    case OstrelMode::diagnosis:
        return renderDiagnosis(
            body, *data, state_, services_.janitor, services_.analyst, services_.maintenance);
    case OstrelMode::processes:
        return renderProcesses(body, *data, services_.workloads);
    case OstrelMode::sessions:
        return renderSessions(body, *data, state_,
            { services_.automations, services_.terminals, services_.liveSessions, *this });
    case OstrelMode::cleanup:
        return body.addWidget(cleanupView(services_.janitor, contentWidth));
    case OstrelMode::automations:
        return renderAutomations(body, services_.automations, contentWidth);
    case OstrelMode::settings:
        set(SettingsText::readout);
        if (settings_)
            renderSettings(body, state_, *settings_, services_.automations, services_.janitor, live_);
        return;
    case OstrelMode::server:
        // Like the settings it owns the readout.
        set(serverReadout(services_.server.state().busy));
        return renderServer(body, services_.server, contentWidth);
    }
}

void PanelFrame::renderBodyThrottled(bool force)
{
    if (force || lastBodyRenderAt_ == platform::distantPast
        || services_.clock.now() - lastBodyRenderAt_ > throttle)
        renderBody();
}

void PanelFrame::switchMode(OstrelMode mode)
{
    const bool forward = index(mode_) <= index(mode);
    mode_ = mode;
    focusToReturn_.reset();
    if (strip_ && mode == OstrelMode::settings)
        strip_->selectNone();
    else if (strip_)
        strip_->select(idOf(mode));
    if (header_)
        header_->settingsButton()->setActive(mode == OstrelMode::settings);
    if (scroll_)
        shaperTabTransition(*scroll_, forward, services_.motion.reduceMotion());
    renderBody();
    // Else the line would go on saying what belongs to the tab before until the next tick.
    if (chooseBody(mode_, state_.snapshots.lastData(), state_.snapshots.backendLastSource()).readout.empty())
        refresh();
    scrollBody(0);
}

void PanelFrame::scrollBody(int place)
{
    if (!scroll_)
        return;
    scroll_->verticalScrollBar()->setValue(place);
    // Once more when the new body has been laid out.
    services_.motion.mainQueue.post([scroll = scroll_, place] {
        if (scroll)
            scroll->verticalScrollBar()->setValue(place);
    });
}

void PanelFrame::takeKeys()
{
    if (!root_)
        return;
    const auto remembered = std::exchange(focusToRestore_, std::nullopt);
    if (!remembered || !remembered->restore(*root_))
        root_->setFocus();
}

void PanelFrame::showPinned(bool pinned)
{
    if (header_ && header_->pinButton())
        header_->pinButton()->setPinned(pinned);
    // Which has the same switch.
    if (mode_ == OstrelMode::settings)
        renderBody();
}

void PanelFrame::showHelpOverlay()
{
    if (!root_ || dismissHelpOverlay(true))
        return;
    // Owned by the root.
    new HelpOverlay(*root_, [this] { dismissHelpOverlay(true); });
}

bool PanelFrame::dismissHelpOverlay(bool animated)
{
    const auto overlays = root_
        ? root_->findChildren<QWidget*>(QLatin1String(HelpOverlay::identifier), Qt::FindDirectChildrenOnly)
        : QList<QWidget*>();
    for (QWidget* overlay : overlays)
        static_cast<HelpOverlay*>(overlay)->leave(animated && !services_.motion.reduceMotion());
    return !overlays.isEmpty();
}

void PanelFrame::set(std::string_view text) { showReadout(text, OstrelStyle::ink); }

void PanelFrame::refresh()
{
    const auto& data = state_.snapshots.lastData();
    if (!data || mode_ == OstrelMode::server || mode_ == OstrelMode::settings)
        return;
    showReadout(readoutText(*data, state_.tick.native(), state_.tick.lastCPU(),
                    state_.snapshots.snapshotAgeText(), state_.snapshots.snapshotIsStale()),
        OstrelStyle::muted);
}

void PanelFrame::showReadout(std::string_view text, const ThemedColor& color)
{
    if (!readout_)
        return;
    readout_->setText(utf16(text));
    readout_->setColor(color);
}

} // namespace ostrel
