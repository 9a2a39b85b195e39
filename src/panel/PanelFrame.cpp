// SPDX-License-Identifier: Apache-2.0
#include "panel/PanelFrame.h"

#include "core/Version.h"
#include "design/Appearance.h"
#include "design/OstrelStyle.h"
#include "design/TabTransition.h"
#include "design/Utf8.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLAppHeader.h"
#include "design/controls/ZOLFooterLine.h"
#include "design/controls/ZOLShellButton.h"
#include "design/controls/ZOLShellLabel.h"
#include "design/voxel/ZOLVoxelModels.h"
#include "design/voxel/ZOLVoxelView.h"
#include "panel/DashboardTab.h"
#include "panel/ProcessesTab.h"
#include "panel/ReadoutText.h"

#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <utility>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr int inset = 16;
constexpr int spacing = 8;
constexpr int headerMarkSize = 40;
constexpr int tabWidth = 80;
constexpr int tabHeight = 30;
constexpr int retryWidth = 160;
constexpr platform::Seconds throttle { 2 };

/// The tabs that this version has.
constexpr std::array builtModes { OstrelMode::overview, OstrelMode::processes };

} // namespace

PanelFrame::PanelFrame(
    const PanelState& state, const platform::Clock& clock, const MotionServices& motion, LiveRegistry& live)
    : state_(state)
    , clock_(clock)
    , motion_(motion)
    , live_(live)
{
}

PanelFrame::~PanelFrame() = default;

void PanelFrame::setAfterRender(std::function<void()> afterRender) { afterRender_ = std::move(afterRender); }

void PanelFrame::makeContent(ZOLThemePolicy::Mode theme, std::function<void(std::string_view)> close)
{
    root_ = std::make_unique<PanelRootView>(PanelRootView::Actions {
        .switchMode = [this](OstrelMode mode) { switchMode(mode); },
        .close = close,
    });
    setAppearance(*root_, theme);
    root_->setFixedSize(panelWidth, panelHeight);
    auto* column = new QVBoxLayout(root_.get());
    column->setContentsMargins(inset, inset, inset, inset);
    column->setSpacing(spacing);
    column->addWidget(makeHeader(std::move(close)));
    column->addWidget(separator(contentWidth));
    column->addWidget(makeStrip());
    readout_ = wrappingLabel("loading…", 11, QFont::DemiBold, OstrelStyle::ink, contentWidth);
    column->addWidget(readout_);
    column->addWidget(separator(contentWidth));
    column->addWidget(makeBody(), 1);
    column->addWidget(separator(contentWidth));
    column->addWidget(makeFooter());
}

QWidget* PanelFrame::makeHeader(std::function<void(std::string_view)> close) const
{
    auto* header = new ZOLAppHeader({ .mark = ZOLAppMark::ostrel,
                                        .name = "OSTREL",
                                        .status = "local + server · a little more room to think",
                                        .version = utf16(fmt::format("{} · {}", appVersion, appBuild)),
                                        .onClose = [close = std::move(close)] { close("x"); } },
        contentWidth);
    auto* character = new ZOLVoxelView(ZOLVoxelModels::ostrel(), motion_);
    character->setFixedSize(headerMarkSize, headerMarkSize);
    character->setPadding(0);
    character->setShowsShadow(false);
    character->setAssemblesOnAppear(state_.settings.motionEnabled);
    character->setAccessibleName("OSTREL character");
    character->setObjectName("header-character");
    character->setToolTip("OSTREL · click flashes the red core");
    header->replaceMark(character);
    return header;
}

QWidget* PanelFrame::makeFooter() const
{
    return new ZOLFooterLine(
        { .keys = "1 dashboard · 3 processes",
            .status = utf16(fmt::format("{} · on this Mac · refreshes while open", appVersion)) },
        contentWidth);
}

QWidget* PanelFrame::makeStrip()
{
    auto* strip = new QWidget;
    auto* row = new QHBoxLayout(strip);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(3);
    tabs_.clear();
    for (const OstrelMode mode : builtModes) {
        auto* tab = new ZOLShellButton(
            utf16(words(mode).title), tabWidth, [this, mode] { switchMode(mode); }, tabHeight);
        tab->setKind(ZOLShellButton::Kind::navigation);
        tab->setToolTip(utf16(words(mode).hint));
        tab->setActive(mode == mode_);
        tabs_.push_back(tab);
        row->addWidget(tab);
    }
    row->addWidget(flexSpacer(), 1);
    return strip;
}

QWidget* PanelFrame::makeBody()
{
    scroll_ = new QScrollArea;
    scroll_->setFrameShape(QFrame::NoFrame);
    scroll_->setWidgetResizable(true);
    scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll_->setFocusPolicy(Qt::NoFocus);
    scroll_->setWidget(new QWidget);
    return scroll_;
}

bool PanelFrame::shown() const { return root_ && root_->isVisible(); }

void PanelFrame::renderBody()
{
    lastBodyRenderAt_ = clock_.now();
    if (!scroll_)
        return;
    live_.clear();
    const int scrolledTo = scroll_->verticalScrollBar()->value();
    scroll_->setUpdatesEnabled(false);
    auto* page = new QWidget;
    auto* body = new QVBoxLayout(page);
    body->setContentsMargins(0, 0, 0, 0);
    body->setSpacing(0);
    const BodyChoice choice
        = chooseBody(mode_, state_.snapshots.lastData(), state_.snapshots.backendLastSource());
    if (!choice.readout.empty())
        set(choice.readout);
    renderScreen(*body, choice.screen);
    body->addStretch(1);
    // A rebuild usually runs inside a handler of one of the old body's own controls.
    if (QWidget* old = scroll_->takeWidget())
        old->deleteLater();
    scroll_->setWidget(page);
    if (afterRender_)
        afterRender_();
    page->layout()->activate();
    scroll_->setUpdatesEnabled(true);
    scroll_->verticalScrollBar()->setValue(scrolledTo);
}

void PanelFrame::renderBodyThrottled(bool force)
{
    if (force || lastBodyRenderAt_ == platform::distantPast || clock_.now() - lastBodyRenderAt_ > throttle)
        renderBody();
}

void PanelFrame::switchMode(OstrelMode mode)
{
    if (std::ranges::find(builtModes, mode) == builtModes.end())
        return;
    const bool forward = mode_ <= mode;
    mode_ = mode;
    for (std::size_t tab = 0; tab < tabs_.size(); ++tab)
        tabs_[tab]->setActive(builtModes[tab] == mode);
    if (scroll_)
        shaperTabTransition(*scroll_, forward, motion_.reduceMotion());
    renderBody();
    if (scroll_)
        scroll_->verticalScrollBar()->setValue(0);
    refresh();
}

void PanelFrame::renderScreen(QVBoxLayout& body, BodyScreen screen)
{
    const std::string& state = state_.snapshots.backendState();
    switch (screen) {
    case BodyScreen::loading:
        renderNotice(body, "Reading this Mac…",
            "Memory, process and session counts will appear when the local snapshot completes.", false);
        break;
    case BodyScreen::error:
        renderNotice(body, "Snapshot unavailable", state, true);
        break;
    case BodyScreen::empty:
        renderNotice(
            body, "No snapshot yet", "Refresh to collect memory, process and session readings.", true);
        break;
    case BodyScreen::stale: {
        const auto notice = fmt::format("Showing the last successful reading. {}", state);
        body.addWidget(wrappingLabel(utf16(notice), 11, QFont::Normal, OstrelStyle::red, contentWidth));
        renderNotice(body, {}, {}, true);
        renderTab(body);
        break;
    }
    case BodyScreen::tab:
        renderTab(body);
        break;
    }
}

void PanelFrame::renderNotice(QVBoxLayout& body, std::string_view title, std::string_view text, bool retry)
{
    if (!title.empty())
        body.addWidget(wrappingLabel(utf16(title), 16, QFont::DemiBold, OstrelStyle::ink, contentWidth));
    if (!text.empty())
        body.addWidget(wrappingLabel(utf16(text), 11, QFont::Normal, OstrelStyle::muted, contentWidth));
    if (!retry)
        return;
    auto* button = ostrelTip(
        new OstrelButton("retry snapshot", retryWidth, [this] { state_.snapshots.fetchPythonData(); }),
        "read the process snapshot again; nothing is stopped or changed");
    body.addSpacing(spacing);
    body.addWidget(button);
    body.addSpacing(spacing);
}

void PanelFrame::renderTab(QVBoxLayout& body)
{
    const auto& data = state_.snapshots.lastData();
    if (mode_ == OstrelMode::processes && data)
        renderProcesses(body, *data);
    else
        renderOverview(body, state_, live_);
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
