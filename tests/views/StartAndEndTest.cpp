// SPDX-License-Identifier: Apache-2.0
#include "views/OpenTab.h"

#include "automations/AutomationsBench.h"

#include "design/Fonts.h"
#include "design/controls/ShellViews.h"
#include "design/controls/ZOLHintCard.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>

namespace {

using namespace ostrel;

[[maybe_unused]] auto* const qt = testing::AddGlobalTestEnvironment(new QtEnvironment);

using Lines = std::vector<std::string>;
using platform::Seconds;

/// The application with all its wishes to the platform written down.
struct RecordedApp : AppBench {
    RecordedApp()
    {
        workspace.setReduceMotion(true);
        ZOLHintCard::font = otherFont;
        ZOLAppShellStyle::font = otherFont;
        log.before = [this] {
            if (hasFonts() && !std::exchange(fonts_, true))
                log.calls.emplace_back("(has its fonts)");
        };
        for (const char* name : { "automations_bridge", "session_bridge", "ostrel_remote", "ostrel_janitor" })
            bundle.resources.emplace(
                std::string("collectors/") + name + ".py", std::string("/opt/") + name + ".py");
        record();
    }

    /// What was wished for since the last look. Of settings in a row the first is named, of faces one.
    Lines since()
    {
        Lines told;
        for (const std::string& call : std::exchange(log.calls, {})) {
            const bool setting = call.starts_with("looks up ") || call.starts_with("stores ");
            if (told.empty() || (told.back() != call && !(setting && told.back() == "…"))) {
                const bool another = setting && !told.empty()
                    && (told.back().starts_with("looks up ") || told.back().starts_with("stores "));
                told.push_back(another ? "…" : call);
            }
        }
        return told;
    }

private:
    using Font = QFont (*)(double, QFont::Weight);

    static QFont otherFont(double, QFont::Weight) { return {}; }
    static bool hasFonts()
    {
        const Font* shell = ZOLAppShellStyle::font.target<Font>();
        return ZOLHintCard::font == OstrelStyle::mono && shell && *shell == OstrelStyle::mono;
    }

    bool fonts_ = false;
};

const std::string historyFile = OstrelHistory::defaultPath("/home/someone");
const std::string stateFile = "/home/someone/.config/zol-mini-apps/ostrel-bar-state.json";

/// The start with everything up to where the panel would open.
const Lines ownStart { "lets others see it", "looks for others", "plans for 1.2 s",
    "looks up dev.quent.ostrel.theme", "(has its fonts)", "looks up zol.shell.pin-migrated", "…",
    "reads " + historyFile, "looks for " + historyFile, "looks for /opt/ostrel.py", "makes the item",
    "reads the machine", "draws the item",
    "looks up NSStatusItem Preferred Position dev.quent.ostrel.status-item.v3", "writes " + stateFile,
    "plans for 2 s", "plans for 15 s", "plans for 60 s", "samples the processor", "reads the machine",
    "hands work to the background", "draws the item",
    "looks up NSStatusItem Preferred Position dev.quent.ostrel.status-item.v3", "looks for " + stateFile,
    "looks up ostrel.hintPolicy", "…", "timer of 10 s", "listens to the hotkey", "takes the hotkey",
    "listens to addresses", "watches message" };
/// Behind it, where the panel opens: it is shown, its place is told, and the first snapshot is asked for.
const Lines opening { "makes the popover", "looks up dev.quent.ostrel.theme", "watches display option",
    "looks up dev.quent.ostrel.theme", "…", "writes " + stateFile, "shows the popover", "watches cover",
    "watches press", "plans for 0.3 s", "looks for /opt/ostrel.py", "hands work to the background",
    "timer of 30 s" };

TEST(StartAndEnd, TheStartGoesInItsOrderAndOpensThePanelUnlessItWasWishedOtherwise)
{
    struct Case {
        LaunchWish wish;
        bool tray;
        bool opens;
    };
    for (const Case& c : { Case { {}, true, true }, Case { {}, false, true },
             Case { { .background = true }, true, false }, Case { { .background = true }, false, false },
             Case { { .urls = { "ostrel://hide" } }, true, false } }) {
        RecordedApp app;
        if (c.tray)
            app.statusBar.placement = platform::StatusItemPlacement { { 1400, 958, 24, 24 }, true };
        app.defaults.setText("dev.quent.ostrel.refresh", "calm");
        (void)app.since();
        app.start(c.wish);
        Lines expected = ownStart;
        if (c.opens)
            expected.insert(expected.end(), opening.begin(), opening.end());
        EXPECT_EQ(app.since(), expected);
        EXPECT_EQ(app.globalQueue.waiting.front().first, platform::QueuePriority::utility);
        app.globalQueue.run();
        EXPECT_EQ(app.files.contents[historyFile], app.delegate.history().serialized());
    }
}

TEST(StartAndEnd, ADuplicateHandsItsWishOverAndTouchesNothing)
{
    const Lines leaving { "lets others see it", "looks for others", "hands over to the elder", "withdraws" };
    const platform::RunningInstance elder { .pid = 9, .launch = 1 };
    for (const LaunchWish& wish :
        { LaunchWish {}, { .urls = { "ostrel:" } }, { .background = true }, { { "ostrel:" }, true } }) {
        const bool silent = wish.urls.empty() && wish.background;
        Lines expected = leaving;
        if (silent)
            expected.erase(expected.begin() + 2);
        RecordedApp early;
        early.instances.rest = { elder };
        (void)early.since();
        EXPECT_FALSE(early.delegate.applicationDidFinishLaunching(wish));
        EXPECT_EQ(early.since(), expected);

        RecordedApp late;
        late.start(wish);
        late.instances.rest = { elder };
        late.time.advance(Seconds(1.1));
        EXPECT_EQ(late.quits, 0);
        (void)late.since();
        late.time.advance(Seconds(0.1));
        EXPECT_EQ(late.quits, 1);
        EXPECT_EQ(late.since(), expected);
        const std::vector<Lines> handed(silent ? 0 : 1, wish.urls);
        EXPECT_EQ(early.urlEvents.handed, handed);
        EXPECT_EQ(late.urlEvents.handed, handed);
    }
}

/// A background with a thread for each job, in which children hang until they are let go.
class HangingBackground {
public:
    /// Of the children, those with that word on their command line hang; without one, all of them.
    explicit HangingBackground(AppBench& bench, const std::string& word = {})
        : bench_(bench)
    {
        bench_.children.whileRunning = [this, word] {
            if (!word.empty() && std::ranges::count(bench_.children.requests.back().arguments, word) == 0)
                return;
            std::unique_lock lock(mutex_);
            const std::size_t place = hanging_++;
            changed_.notify_all();
            changed_.wait(lock, [this, place] { return place < released_; });
        };
    }
    HangingBackground(const HangingBackground&) = delete;
    HangingBackground& operator=(const HangingBackground&) = delete;
    ~HangingBackground()
    {
        letEnd();
        for (std::thread& thread : threads_)
            thread.join();
    }

    /// Starts what waits, one job after the other, each until it has ended or hangs.
    void start()
    {
        while (!bench_.globalQueue.waiting.empty()) {
            auto job = std::move(bench_.globalQueue.waiting.front().second);
            bench_.globalQueue.waiting.pop_front();
            std::unique_lock lock(mutex_);
            const std::size_t before = hanging_ + ended_;
            threads_.emplace_back([this, job = std::move(job)]() mutable {
                job();
                job = nullptr;
                const std::lock_guard locked(mutex_);
                ++ended_;
                changed_.notify_all();
            });
            changed_.wait(lock, [this, before] { return hanging_ + ended_ > before; });
        }
    }

    /// Lets the one that hangs go on.
    void letGo()
    {
        const std::lock_guard lock(mutex_);
        released_ = std::min(released_ + 1, hanging_);
        changed_.notify_all();
    }

    /// Lets all come to their end, one job after the other, since the fakes know one thread.
    void letEnd()
    {
        for (std::unique_lock lock(mutex_); ended_ < threads_.size();) {
            const std::size_t before = hanging_ + ended_;
            released_ = std::min(released_ + 1, hanging_);
            changed_.notify_all();
            changed_.wait(lock, [this, before] { return hanging_ + ended_ > before; });
        }
    }

    /// How many children have hung until now.
    [[nodiscard]] std::size_t hung()
    {
        const std::lock_guard lock(mutex_);
        return hanging_;
    }

private:
    AppBench& bench_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::thread> threads_;
    std::size_t hanging_ = 0;
    std::size_t ended_ = 0;
    std::size_t released_ = 0;
};

/// An application in whose background a script runs.
struct BusyApp : RecordedApp {
    BusyApp()
    {
        kernel.reading.pressureLevel = 2;
        statusBar.placement = platform::StatusItemPlacement { { 1400, 958, 24, 24 }, true };
        statusBar.onRemove = [this] {
            if (background_)
                background_->letGo();
        };
    }
    ~BusyApp() { finish(); }

    /// Waits until nothing runs in the background any more, and drops what was put off.
    void finish()
    {
        if (background_) {
            background_->letEnd();
            background_->start();
            background_->letEnd();
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    /// Lets what waits be done in a background of its own, in which a script with that word goes on running.
    void runUntil(const std::string& word)
    {
        background_.emplace(*this, word);
        background_->start();
        ASSERT_EQ(background_->hung(), 1U) << word;
    }

    /// Chooses that row of the item's menu.
    void choose(const std::string& title) { choose(title, statusBar.menu()); }

    void press(const char* name)
    {
        QAbstractButton* const found = button(name);
        ASSERT_TRUE(found) << name;
        found->click();
        time.runPosted();
    }

private:
    static void choose(const std::string& title, const platform::Menu& rows)
    {
        for (const platform::MenuItem& row : rows) {
            if (row.title == title)
                row.action();
            choose(title, row.submenu);
        }
    }

    std::optional<HangingBackground> background_;
};

/// A state in which the end may come.
struct State {
    const char* name;
    LaunchWish wish;
    std::function<void(BusyApp&)> arrange;
    const char* script; ///< that runs then, by a word of its command line; empty for none
    int stops; ///< how many children the end stops
};

TEST(StartAndEnd, TheEndLeavesNothingInWhateverStateItComesAndStopsTheCollectorsChildrenAlone)
{
    const Lines ending { "ends the timer of 5 s", "ends the timer of 15 s", "stops a child", "withdraws",
        "watches no message", "listens to no address", "gives the hotkey back", "watches no press",
        "drops the popover", "watches no cover", "watches no display option", "takes the item off" };
    const auto nothing = [](BusyApp&) {};
    const LaunchWish quiet { .background = true };
    const State states[] {
        { "in the background", quiet, nothing, "", 0 },
        { "open", {}, nothing, "", 0 },
        { "pinned, with the keys shown", {},
            [](BusyApp& app) {
                app.delegate.panel().setPinned(true);
                app.delegate.frame().showHelpOverlay();
            },
            "", 0 },
        { "closed again", {}, [](BusyApp& app) { app.delegate.panel().close("esc"); }, "", 0 },
        { "recording", {},
            [](BusyApp& app) {
                app.delegate.frame().switchMode(OstrelMode::settings);
                app.delegate.hotkeys().recordHotkey();
                EXPECT_EQ(app.mouse.keyMonitors.count(), 1);
            },
            "", 0 },
        { "hint", quiet,
            [](BusyApp& app) {
                app.delegate.hints().showCompanion(false);
                EXPECT_TRUE(app.delegate.hints().hintShown());
            },
            "", 0 },
        { "sample", {}, [](BusyApp& app) { app.delegate.hints().previewCompanion(); }, "", 0 },
        { "hiding the item", {},
            [](BusyApp& app) { app.delegate.barItem().setBarMode(BarDisplayMode::hidden); }, "", 0 },
        { "snapshot", {}, [](BusyApp& app) { app.delegate.snapshots().fetchPythonData(); }, "json", 1 },
        { "analyst", {},
            [](BusyApp& app) {
                app.fetch(snapshotText(1));
                app.delegate.frame().switchMode(OstrelMode::diagnosis);
                app.press("▶ run local analyst");
            },
            "analyze", 1 },
        { "audit", quiet, [](BusyApp& app) { app.choose("audit MCP (read-only)"); }, "clean", 1 },
        { "findings", quiet, [](BusyApp& app) { app.delegate.janitorTab().refreshFindings(); }, "findings",
            0 },
        { "cleaning", quiet,
            [](BusyApp& app) {
                app.answer(R"({"title":"t","count":1,"size_mb":2,"files":[{"path":"/h/f","mb":2}]})");
                app.alerts.answers = { 0 };
                app.delegate.janitorTab().pressFiles("agents-light");
                app.deliver();
            },
            "clean", 0 },
        { "inventory", quiet, [](BusyApp& app) { app.delegate.automationsTab().refresh(); }, "list", 0 },
        { "journal", quiet,
            [](BusyApp& app) {
                app.answer(inventoryJson({ jobJson("launchd", "one") }));
                app.delegate.automationsTab().refresh();
                app.settleBackground();
                app.delegate.automationsTab().toggleRow(app.delegate.automationsTab().body().rows.at(0).item);
            },
            "journal", 0 },
        { "terminals", quiet, [](BusyApp& app) { app.delegate.sessionPanel().refresh(); }, "list", 0 },
        { "server", quiet, [](BusyApp& app) { app.delegate.server().checkServer(); }, "/opt/ostrel_remote.py",
            0 },
    };
    for (const State& state : states) {
        SCOPED_TRACE(state.name);
        BusyApp app;
        app.start(state.wish);
        app.settleBackground();
        state.arrange(app);
        if (*state.script)
            app.runUntil(state.script);
        (void)app.since();
        const int stored = app.defaults.writes + app.files.writes;
        app.delegate.applicationWillTerminate();
        if (state.script == std::string_view("json")) {
            EXPECT_EQ(app.since(), ending);
        }
        app.finish();
        EXPECT_EQ(*app.children.stops, state.stops);
        EXPECT_EQ(app.time.timers(), 0);
        EXPECT_EQ(app.mouse.monitors.count() + app.mouse.keyMonitors.count()
                + app.notifications.observers.count() + app.workspace.observers.count()
                + app.occlusion.observers.count(),
            0);
        EXPECT_FALSE(app.hotKeys.registered);
        EXPECT_FALSE(app.urlEvents.handlers.open);
        EXPECT_FALSE(app.instances.registered);
        EXPECT_EQ(app.popovers.alive + app.statusBar.items, 0);
        EXPECT_FALSE(app.delegate.hints().hintShown());
        // What was put off until later writes no file of a program that has ended.
        app.time.advance(Seconds(60));
        EXPECT_EQ(app.defaults.writes + app.files.writes, stored);
    }
}

TEST(AppDelegate, ConstructingItTouchesNothing)
{
    AppBench bench;
    EXPECT_EQ(bench.time.timers(), 0);
    EXPECT_EQ(bench.kernel.reads, 0);
    EXPECT_TRUE(bench.defaults.values.empty());
    EXPECT_TRUE(bench.statusBar.ids.empty());
    EXPECT_FALSE(bench.delegate.frame().rootView());
}

TEST(AppDelegate, AddressesStandInPlaceOfOpeningAndEveryWayInReachesThePanel)
{
    AppBench bench;
    EXPECT_TRUE(bench.delegate.applicationDidFinishLaunching({ .urls = { "ostrel://hide" } }));
    EXPECT_FALSE(bench.delegate.panel().shown());
    bench.urlEvents.handlers.open("ostrel://toggle");
    EXPECT_TRUE(bench.delegate.panel().shown());
    bench.notifications.post("dev.quent.ostrel.testbed", { { "action", "hide" } });
    bench.notifications.observers.tell();
    EXPECT_FALSE(bench.delegate.panel().shown());
    bench.urlEvents.handlers.reopen();
    EXPECT_TRUE(bench.delegate.panel().shown());
    bench.delegate.panel().close("test");
    bench.urlEvents.handlers.action("settings");
    EXPECT_TRUE(bench.delegate.panel().shown());
    EXPECT_EQ(bench.delegate.frame().mode(), OstrelMode::settings);
}

TEST(AppDelegate, APlainStartOpensThePanelAndFetchesWhileItIsOpen)
{
    AppBench bench;
    bench.start();
    EXPECT_TRUE(bench.delegate.frame().shown());
    bench.fetch(snapshotText(1));
    bench.time.advance(platform::Seconds(15));
    bench.deliver();
    std::vector<std::string> started;
    for (const auto& request : bench.children.requests)
        started.push_back(request.arguments[0] + " " + request.arguments[1]);
    const std::vector<std::string> expected { "/opt/ostrel.py json", "../automations_bridge.py list",
        "/opt/ostrel.py json" };
    EXPECT_EQ(started, expected);
    bench.delegate.panel().close("esc");
    bench.time.advance(platform::Seconds(60));
    bench.deliver();
    EXPECT_EQ(bench.children.requests.size(), 3U) << "a closed panel starts no child";
}

TEST(AppDelegate, ATickNeverWaitsForAScriptWhateverHangs)
{
    AppBench bench;
    bench.defaults.setText("ostrel.server.alias", "srv");
    HangingBackground background(bench);
    bench.start();
    for (const auto& ask : std::vector<std::function<void(AppDelegate&)>> {
             [](AppDelegate& app) { app.automationsTab().refresh(); },
             [](AppDelegate& app) { app.janitorTab().refreshFindings(); },
             [](AppDelegate& app) { app.sessionPanel().refresh(); },
             [](AppDelegate& app) { app.server().checkServer(); },
         }) {
        ask(bench.delegate);
        background.start();
    }
    EXPECT_GE(background.hung(), 5U) << "the snapshot, and what was asked for";
    const int reads = bench.kernel.reads;
    const auto period = bench.delegate.tick().nativeInterval();
    constexpr int minutes = 30;
    for (int minute = 0; minute < minutes; ++minute) {
        bench.time.advance(std::chrono::minutes(1));
        background.start();
    }
    EXPECT_GE(bench.kernel.reads - reads, static_cast<int>(minutes * 60 / period.count()));
    EXPECT_EQ(bench.delegate.history().points.size(), minutes + 1U);
    EXPECT_EQ(bench.files.contents[OstrelHistory::defaultPath("/home/someone")],
        bench.delegate.history().serialized())
        << "what hangs holds no other job";
    EXPECT_LE(background.hung(), 8U) << "one of each kind at a time";
}

} // namespace
