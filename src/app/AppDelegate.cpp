// SPDX-License-Identifier: Apache-2.0
#include "app/AppDelegate.h"

#include "design/ZOLAppMarkView.h"
#include "platform/qt/WindowHints.h"

#include <array>
#include <utility>
#include <vector>

namespace ostrel {

namespace {

/// At quit, how long the collector's children get to end: asking, then killing, takes half a second.
constexpr platform::Seconds quitPatience { 0.8 };

/// The sizes that tray hosts draw at. Each is drawn for itself: a scaled one is blurred on dense screens.
constexpr std::array markSizes { 16, 22, 24, 32, 44, 48, 64 };

platform::Images barMark()
{
    // Bars come dark and light: this grey stands at least 3 to 1 against both.
    constexpr Color ink = zolHex("#858a90");
    std::vector<platform::Image> images;
    images.reserve(markSizes.size());
    for (const int size : markSizes)
        images.push_back(platformImage(tinted(ZOLAppMarkView::image(ZOLAppMark::ostrel, size, true), ink)));
    return platform::Images(std::move(images));
}

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
    , panelState_ { tick_, snapshots_, history_, settings_ }
    , frame_(panelState_, services.clock,
          { services.runLoop, services.mainQueue, services.workspace, services.occlusion }, liveRegistry_)
    , panel_(frame_, services.defaults,
          { .beforeShow = [](QWidget& window) { platform::keepOutOfTaskbar(window); },
              .opened = [this] { snapshots_.startPanelPolling(); },
              .closed = [this] { snapshots_.panelDidClose(); } })
    , barItem_({ services.statusBar, settings_, tick_, snapshots_, panel_, services.quit })
    , liveValues_(panelState_, liveRegistry_, frame_, [this] { return barItem_.title(); })
{
    tick_.connect(*this, snapshots_);
    snapshots_.connect(frame_, frame_);
    frame_.setAfterRender([this] { liveValues_.refreshLiveValues(); });
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching(bool backgroundLaunch)
{
    settings_.loadSettings(tick_);
    history_ = OstrelHistory::load(services_.files, historyFilePath_, services_.clock.now());
    snapshots_.ensureCollectorAvailable();
    barItem_.setupStatusItem(barMark());
    tick_.startNativeTimer();
    if (!backgroundLaunch)
        panel_.show();
}

void AppDelegate::applicationWillTerminate()
{
    tick_.stopNativeTimer();
    snapshots_.invalidateTimer();
    collector_->cancelAll();
    barItem_.removeStatusItem();
    collector_->awaitIdle(quitPatience);
}

void AppDelegate::recordMinute(const MinuteReading& reading)
{
    if (!history_.record(reading.cpu, reading.swap, reading.ram, reading.load, reading.at))
        return;
    services_.globalQueue.async(platform::QueuePriority::utility,
        [points = history_, path = historyFilePath_, &files = services_.files] { points.save(files, path); });
}

void AppDelegate::updateStatusButton() { barItem_.updateStatusButton(); }

void AppDelegate::considerCompanion()
{
    // Hints speak from here.
}

bool AppDelegate::panelShown() const { return frame_.shown(); }

void AppDelegate::refreshPanel()
{
    liveValues_.refreshLiveValues();
    frame_.refresh();
}

} // namespace ostrel
