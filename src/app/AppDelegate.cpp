// SPDX-License-Identifier: Apache-2.0
#include "app/AppDelegate.h"

#include "app/StandardStreams.h"
#include "bar/FamilyReaders.h"
#include "core/Version.h"
#include "design/Fonts.h"
#include "design/controls/ShellViews.h"
#include "design/controls/ZOLFooterLine.h"
#include "design/controls/ZOLHintCard.h"
#include "panel/PanelScreen.h"

#include <array>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace ostrel {

namespace {

/// At quit, how long the collector's children get to end: asking, then killing, takes half a second.
constexpr platform::Seconds quitPatience { 0.8 };

/// When to look for an elder instance again.
constexpr platform::Seconds secondLook { 1.2 };

/// Holds the icon theme with the mark; empty when the program came without it.
std::string iconFolder(const platform::Bundle& bundle)
{
    constexpr std::string_view mark = "icons/hicolor/scalable/status/dev.quent.ostrel-symbolic.svg";
    constexpr std::string_view folder = "icons";
    const auto path = bundle.pathForResource(mark);
    return path ? path->substr(0, path->size() - mark.size() + folder.size()) : std::string();
}

/// The tab that a finding opens by that name; nothing for another name.
std::optional<OstrelMode> findingTarget(std::string_view name)
{
    constexpr std::array<std::pair<std::string_view, OstrelMode>, 4> targets { {
        { "system", OstrelMode::system },
        { "processes", OstrelMode::processes },
        { "sessions", OstrelMode::sessions },
        { "cleanup", OstrelMode::cleanup },
    } };
    for (const auto& [target, mode] : targets)
        if (target == name)
            return mode;
    return std::nullopt;
}

std::string catalogueUrl() { return "https://" + std::string(ZOLFooterLine::catalogueHost) + "/"; }

} // namespace

AppDelegate::AppDelegate(const PlatformServices& services)
    : services_(services)
    , historyFilePath_(OstrelHistory::defaultPath(services.files.homeDirectory()))
    , cpuSampler_(services.kernel)
    , tick_(services.kernel, cpuSampler_, services.clock, services.runLoop, services.defaults)
    , settings_(services.defaults)
    , collector_(std::make_shared<CollectorRunner>(services.children))
    , snapshots_({ services.runLoop, services.mainQueue, services.globalQueue, services.files,
                     services.bundle, services.clock },
          collector_, tick_)
    , maintenance_({ services.mainQueue, services.globalQueue, services.clock, services.alerts }, collector_,
          snapshots_)
    , analyst_(
          { services.mainQueue, services.globalQueue, services.alerts }, collector_, snapshots_, maintenance_)
    , janitor_({ { services.mainQueue, services.globalQueue, services.files, services.bundle, services.clock,
                     services.children, services.processSignals },
          services.defaults, services.alerts, services.workspace })
    , workloads_({ services.mainQueue, services.alerts, janitor_, maintenance_, snapshots_ })
    , automations_({ services.mainQueue, services.globalQueue, services.files, services.bundle,
          services.clock, services.children, services.alerts, services.workspace })
    , terminals_(
          { services.mainQueue, services.globalQueue, services.bundle, services.clock, services.children })
    , liveSessions_({ services.mainQueue, services.alerts, services.pasteboard })
    , server_({ services.mainQueue, services.globalQueue, services.files, services.bundle, services.children,
          services.defaults })
    , panelState_ { tick_, snapshots_, history_, settings_, historyFilePath_,
        [this] { return server_.state().health.has_value(); } }
    , frame_(panelState_,
          { services.clock, { services.runLoop, services.mainQueue, services.workspace, services.occlusion },
              services.alerts, services.defaults, services.processInfo, analyst_, maintenance_, janitor_,
              workloads_, automations_, terminals_, liveSessions_, server_ },
          liveRegistry_)
    , panel_(frame_, settings_,
          { services.popovers, services.events, services.workspace, services.screens, services.defaults,
              services.mainQueue, services.clock },
          { .hasBarItem = [this] { return barItem_.exists(); },
              .barItemFrame = [this] { return barItem_.frame(); },
              .willShow = [this](bool opening) { hints_.panelWillShow(opening); },
              .placed = [this](std::string_view text) { panelPlaced(text); },
              .opened = [this] { snapshots_.startPanelPolling(); },
              .applyBarLength = [this] { barItem_.applyPendingLength(); },
              .closed = [this] { panelDidClose(); } })
    , theme_(services.defaults, settings_, panel_)
    , barState_({ services.files, services.defaults, services.screens, services.clock })
    , barItem_({ services.statusBar, services.mainQueue, services.clock, settings_, tick_, snapshots_, panel_,
          frame_, barPainter_, barState_, iconFolder(services.bundle) })
    , serviceMenu_({ .bar = barItem_,
          .settings = settings_,
          .tick = tick_,
          .panel = panel_,
          .choices = theme_,
          .runClean = [this] { maintenance_.runClean(); },
          .trimLogs = [this] { maintenance_.trimLogs(); },
          .deepClean = [this] { maintenance_.deepClean(); },
          .showAbout = [this] { aboutWindow_.show(); },
          .quit = services.quit })
    , routes_(panel_, frame_)
    , hintStage_({ services.runLoop, services.mainQueue, services.workspace, services.occlusion },
          services.floatingWindows)
    , hints_({ services.defaults, services.mainQueue, services.clock, services.screens, tick_, settings_,
          panel_, frame_, hintStage_, [this] { return hintAnchor(); } })
    , hotkeys_({ .settings = settings_,
          .center = services.hotKeys,
          .events = services.events,
          .files = services.files,
          .panel = panel_,
          .body = frame_,
          .siblings = FamilyHotkeys::diskReader(services.suites, services.files),
          .takeKeys = [this] { panel_.takeKeys(); },
          .updateBar = [this] { barItem_.updateStatusButton(); } })
    , liveValues_(panelState_, liveRegistry_, frame_, [this] { return barItem_.title(); })
{
    tick_.connect(*this, snapshots_);
    theme_.addListener([this](ZOLThemePolicy::Mode mode) {
        aboutWindow_.applyTheme(mode);
        hints_.applyTheme(mode);
    });
    snapshots_.connect(frame_, frame_);
    snapshots_.setBusy(
        [this] { return analyst_.diagnosisRunning() || !maintenance_.cleanupRunning().empty(); });
    maintenance_.connect(frame_);
    analyst_.connect(frame_);
    janitor_.connect(frame_);
    workloads_.connect(frame_);
    automations_.connect(frame_);
    terminals_.connect(frame_);
    liveSessions_.connect(frame_);
    server_.connect(frame_);
    frame_.setActions({ .close = [this](std::string_view reason) { panel_.close(reason); },
        .setPinned = [this](bool pinned) { panel_.setPinned(pinned); },
        .setTheme = [this](ZOLThemePolicy::Mode mode) { theme_.setTheme(mode); },
        .openCatalogue = [this] { services_.workspace.open(catalogueUrl()); },
        .rendered =
            [this] {
                // Gauges go on from what was last seen, and other tabs show none.
                if (frame_.mode() == OstrelMode::system)
                    liveValues_.refreshGauges();
            } });
    frame_.setSettings({ barItem_, tick_, theme_, hotkeys_, hints_,
        [this] {
            settings_.flipMotion();
            frame_.renderBody();
        },
        [this] { frame_.renderBody(); } });
}

AppDelegate::~AppDelegate() = default;

bool AppDelegate::applicationDidFinishLaunching(const LaunchWish& wish)
{
    janitor_.setOnOpenTab([this](std::string_view target) {
        if (const auto mode = findingTarget(target))
            frame_.switchMode(*mode);
    });
    if (leavesToElder(wish))
        return false;
    // Of two that were started in one moment, neither may have seen the other yet.
    services_.mainQueue.postAfter(secondLook, life_.guard([this, wish] {
        if (leavesToElder(wish))
            services_.quit();
    }));
    theme_.loadTheme();
    ZOLHintCard::font = OstrelStyle::mono;
    ZOLAppShellStyle::font = OstrelStyle::mono;
    settings_.loadSettings(tick_);
    server_.loadSettings();
    loadHistory();
    snapshots_.ensureCollectorAvailable();
    barItem_.setupStatusItem([this] { return serviceMenu_.rebuildMenu(); });
    tick_.startNativeTimer();
    hotkeys_.start();
    hotkeys_.applyHotkey();
    listenToRoutes();
    for (const std::string& url : wish.urls)
        routes_.handleUrl(url);
    if (wish.urls.empty() && !wish.background)
        panel_.show();
    return true;
}

void AppDelegate::checkItself()
{
    theme_.setOffscreen();
    hotkeys_.setOffscreen();
    frame_.standStill();
    automations_.setSelfTest(true);
    terminals_.setSelfTest(true);
}

void AppDelegate::loadHistory()
{
    history_ = OstrelHistory::load(services_.files, historyFilePath_, services_.clock.now());
}

bool AppDelegate::leavesToElder(const LaunchWish& wish)
{
    const auto line = enforceSingleInstance(services_.instances, services_.urlEvents, wish);
    if (!line)
        return false;
    services_.instances.withdraw();
    say(stdout, *line);
    return true;
}

void AppDelegate::listenToRoutes()
{
    services_.urlEvents.start({ .open = [this](const std::string& url) { routes_.handleUrl(url); },
        .reopen = [this] { routes_.handleReopen(); },
        .action = [this](const std::string& name) { routes_.handleAction(name); } });
    testbedObservation_ = services_.notifications.observe(std::string(appIdentifier) + ".testbed",
        [this](const platform::UserInfo& userInfo) { routes_.handleTestbedNotification(userInfo); });
}

void AppDelegate::applicationWillTerminate()
{
    tick_.stopNativeTimer();
    snapshots_.invalidateTimer();
    collector_->cancelAll();
    // A launch from here on needn't give way to this process.
    services_.instances.withdraw();
    testbedObservation_.reset();
    services_.urlEvents.stop();
    hotkeys_.stop();
    hints_.dismissCompanion();
    panel_.takeDown();
    barItem_.removeStatusItem();
    collector_->awaitIdle(quitPatience);
}

void AppDelegate::processWillExit()
{
    collector_->cancelAll();
    services_.instances.withdraw();
    collector_->awaitIdle(quitPatience);
}

void AppDelegate::panelDidClose()
{
    snapshots_.panelDidClose();
    maintenance_.panelDidClose();
    analyst_.panelDidClose();
}

void AppDelegate::panelPlaced(std::string_view text)
{
    barState_.setLastPanelScreen(std::string(text));
    barState_.writeBarState();
}

void AppDelegate::recordMinute(const MinuteReading& reading)
{
    if (!history_.record(reading.cpu, reading.swap, reading.ram, reading.load, reading.at))
        return;
    services_.globalQueue.async(platform::QueuePriority::utility,
        [points = history_, path = historyFilePath_, &files = services_.files] { points.save(files, path); });
}

void AppDelegate::updateStatusButton() { barItem_.updateStatusButton(); }

void AppDelegate::considerCompanion() { hints_.considerCompanion(); }

std::optional<platform::Rect> AppDelegate::hintAnchor() const
{
    if (!barItem_.exists() || settings_.barDisplayMode != BarDisplayMode::hidden)
        return barItem_.frame();
    // Where the panel hangs from.
    const auto place = PanelScreen::current(services_.screens, std::nullopt);
    return PanelScreen::hiddenModeAnchor(
        services_.screens, place ? std::optional(place->screen.visible) : std::nullopt);
}

bool AppDelegate::panelShown() const { return frame_.shown(); }

void AppDelegate::refreshPanel()
{
    liveValues_.refreshLiveValues();
    frame_.refresh();
}

} // namespace ostrel
