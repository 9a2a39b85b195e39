// SPDX-License-Identifier: Apache-2.0
#include "app/SelfTest.h"

#include "app/SelfTestFixture.h"
#include "bar/OstrelHotkey.h"
#include "core/Json.h"
#include "design/Fonts.h"
#include "design/OstrelStyle.h"
#include "design/Utf8.h"
#include "design/ZOLAppMarkView.h"
#include "design/ZOLPinPolicy.h"
#include "design/controls/ZOLAppHeader.h"
#include "design/controls/ZOLFooterLine.h"
#include "design/controls/ZOLPinButton.h"
#include "design/controls/ZOLShellButton.h"
#include "design/controls/ZOLShellLabel.h"
#include "design/controls/ZOLTabStrip.h"
#include "design/voxel/VoxelView.h"
#include "panel/PanelSize.h"
#include "readings/NativeStats.h"

#include <QEventLoop>
#include <QFontInfo>
#include <QLayout>
#include <QPixmap>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <thread>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace ostrel {

namespace {

using namespace std::chrono_literals;

constexpr std::size_t largestSnapshot = std::size_t { 64 } << 20; ///< bytes
constexpr auto betweenSamples = 100ms;
constexpr auto settling = 20ms;
constexpr int farAway = -10000; ///< of the window that nobody sees
constexpr int lowestBody = 320;

/// The first view of that kind in a tree; null without one.
template <typename View>
View* first(const QWidget& root)
{
    for (QWidget* view : root.findChildren<QWidget*>())
        if (auto* found = dynamic_cast<View*>(view))
            return found;
    return nullptr;
}

std::string frameText(const QRect& frame)
{
    return fmt::format("({}, {}, {}, {})", frame.x(), frame.y(), frame.width(), frame.height());
}

/// The identifiers of the header's controls, from left to right.
std::vector<std::string> trailingIdentifiers(const ZOLAppHeader& header)
{
    auto buttons = header.findChildren<QAbstractButton*>();
    std::ranges::sort(buttons, {},
        [&header](const QAbstractButton* button) { return button->mapTo(&header, QPoint()).x(); });
    std::vector<std::string> names;
    names.reserve(static_cast<std::size_t>(buttons.size()));
    for (const QAbstractButton* button : buttons)
        names.push_back(button->objectName().toStdString());
    return names;
}

} // namespace

SelfTest::SelfTest(Owner owner)
    : owner_(std::move(owner))
{
    window_.setGeometry(farAway, farAway, panelWidth, panelHeight);
}

SelfTest::~SelfTest() = default;

std::string SelfTest::run(const std::optional<std::string>& snapshotPath)
{
    const bool passed = begin(snapshotPath) && combinations() && hintCard() && hotkeyRules()
        && hotkeyRecorder() && doors() && themes() && runner();
    if (passed)
        owner_.print(fmt::format("PASS: {} offscreen tab/state combinations; {}x{}; fonts; selection; hidden "
                                 "window; native CPU/RAM valid\n",
            count_, panelWidth, panelHeight));
    return failure_;
}

bool SelfTest::check(bool holds, std::string_view what)
{
    if (!holds && failure_.empty())
        failure_ = what;
    return holds;
}

bool SelfTest::has(std::string_view variable, std::string_view value) const
{
    const auto found = owner_.environment.find(std::string(variable));
    return found != owner_.environment.end() && found->second == value;
}

bool SelfTest::begin(const std::optional<std::string>& snapshotPath)
{
    AppDelegate& app = owner_.app;
    const bool publicFixture = has("OSTREL_PUBLIC_FIXTURE", "1");
    app.checkItself();
    if (const auto theme = owner_.environment.find("OSTREL_THEME"); theme != owner_.environment.end())
        OstrelStyle::override = ZOLThemePolicy::resolve(theme->second);
    app.theme().loadTheme();
    if (publicFixture)
        app.showHistory(SelfTestFixture::history(app.services().clock.now()));
    else
        app.loadHistory();
    if (!readSnapshot(snapshotPath) || !readNative())
        return false;
    if (publicFixture)
        app.tick().show(SelfTestFixture::native(), SelfTestFixture::cpu);
    // A system font in its place has another name.
    const QString family = QFontInfo(OstrelStyle::mono(12)).family().remove(' ');
    if (!check(family == "IBMPlexMono", "fonts: the bundled face isn't there"))
        return false;
    hold(app.frame().makeContent());
    return true;
}

bool SelfTest::readSnapshot(const std::optional<std::string>& path)
{
    std::string text = json::dump(SelfTestFixture::snapshot());
    if (path) {
        auto read = owner_.app.services().files.read(*path, largestSnapshot);
        if (!check(read.has_value(), fmt::format("the file can't be read: {}", *path)))
            return false;
        text = std::move(*read);
    }
    const auto value = json::parse(text);
    if (!check(value.has_value(), "the snapshot isn't JSON")
        || !check(value->is_object(), "the snapshot isn't an object"))
        return false;
    snapshot_ = OstrelData::parse(*value);
    return true;
}

bool SelfTest::readNative()
{
    AppDelegate& app = owner_.app;
    const NativeStats native = readNativeStats(app.services().kernel);
    (void)app.cpuSampler().sample();
    std::this_thread::sleep_for(betweenSamples);
    const double cpu = app.cpuSampler().sample();
    app.tick().show(native, cpu);
    return check(cpu >= 0 && cpu <= 100, "native CPU: out of 0…100")
        && check(native.memPct() >= 0 && native.memPct() <= 100, "native RAM: out of 0…100");
}

void SelfTest::hold(QWidget* content)
{
    for (QObject* child : window_.children())
        if (auto* before = qobject_cast<QWidget*>(child))
            before->deleteLater();
    content->setParent(&window_);
    content->setGeometry(QRect(QPoint(), window_.size()));
    content->show();
    layOut();
}

void SelfTest::layOut()
{
    for (QWidget* view : window_.findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
        view->ensurePolished();
    // A window that isn't shown lays nothing out by itself.
    (void)window_.grab(QRect(0, 0, 1, 1));
}

void SelfTest::tellAbout(std::string_view step, QWidget& subject)
{
    if (owner_.aboutToCheck)
        owner_.aboutToCheck(step, subject);
}

void SelfTest::switchTo(OstrelMode mode)
{
    owner_.app.frame().switchMode(mode);
    owner_.app.frame().refresh();
    layOut();
}

bool SelfTest::savePicture(QWidget& view, const std::string& name)
{
    const auto folder = owner_.environment.find("OSTREL_QA_IMAGES");
    if (folder == owner_.environment.end())
        return true;
    const std::string path = fmt::format("{}/{}.png", folder->second, name);
    return check(view.grab().save(utf16(path), "PNG"), fmt::format("the picture can't be written: {}", path));
}

bool SelfTest::combinations()
{
    static const std::optional<OstrelData> none;
    static const std::optional<OstrelData> empty = OstrelData();
    const std::array<State, 5> states { {
        { "loading", none, "local CLI", "snapshot received" },
        { "error", none, "error", "Test collector unavailable" },
        { "empty", empty, "local CLI", "snapshot received" },
        { "live", snapshot_, "local CLI", "snapshot received" },
        { "stale", snapshot_, "error", "snapshot received" },
    } };
    for (const State& state : states) {
        owner_.app.snapshots().show(state.data, state.source, state.text);
        for (const OstrelModeWords& words : ostrelModes())
            if (!combination(state, words.mode))
                return false;
    }
    return true;
}

bool SelfTest::combination(const State& state, OstrelMode mode)
{
    switchTo(mode);
    const bool live = state.name == "live";
    const std::string title(ostrel::words(mode).title);
    const auto* scroll = first<QScrollArea>(window_);
    if (!check(scroll != nullptr, "body: there is none"))
        return false;
    scroll->verticalScrollBar()->setValue(0);
    if (live)
        owner_.print(fmt::format("layout {}: scroll={} doc={} flipped=true\n", title,
            frameText(scroll->geometry()), frameText(scroll->widget()->geometry())));
    tellAbout("combination", window_);
    const bool decorated = first<VoxelView>(*scroll->widget()) || first<ZOLAppMarkView>(*scroll->widget());
    if (!frameHolds(mode) || !marksHold() || !choicesHold() || !edgesHold()
        || !check(mode != OstrelMode::overview || !live || !decorated,
            "compact dashboard contains no decorative hero")
        || !check(scroll->height() >= lowestBody, "body height: below 320"))
        return false;
    QEventLoop loop;
    QTimer::singleShot(settling, &loop, &QEventLoop::quit);
    loop.exec();
    const QPixmap picture = window_.grab();
    if (live && !savePicture(window_, title))
        return false;
    if (!check(!picture.isNull(), "rendering: nothing was drawn")
        || !check(!window_.isVisible(), "hidden window: it is on screen")
        || !check(!owner_.app.panel().built(), "hidden window: a popover was made")
        || !check(!owner_.app.barItem().exists(), "hidden window: a status item was made"))
        return false;
    ++count_;
    return true;
}

bool SelfTest::frameHolds(OstrelMode mode)
{
    const auto* header = first<ZOLAppHeader>(window_);
    const auto* strip = first<ZOLTabStrip>(window_);
    const auto* footer = first<ZOLFooterLine>(window_);
    const auto* scroll = first<QScrollArea>(window_);
    if (!check(header && strip && footer, "frame: a part is missing"))
        return false;
    const auto* character = header->findChild<QWidget*>("header-character");
    const std::vector<std::string> trailing { "settings", "pin-panel", "close-panel" };
    return check(window_.size() == QSize(panelWidth, panelHeight), "window size")
        && check(header->settingsButton()->isActive() == (mode == OstrelMode::settings), "settings button")
        && check(
            mode == OstrelMode::settings || strip->selected() == ostrel::words(mode).title, "tab selection")
        && check(scroll->width() >= contentWidth - 1, "body width")
        && check(trailingIdentifiers(*header) == trailing, "header buttons")
        && check(character && character->window() == &window_
                && character->height() == static_cast<int>(ZOLAppMarkView::headerSize),
            "header character")
        && check(header->markView() == nullptr, "flat mark");
}

bool SelfTest::edgesHold()
{
    const auto* footer = first<ZOLFooterLine>(window_);
    const auto* header = first<ZOLAppHeader>(window_);
    const auto* strip = first<ZOLTabStrip>(window_);
    const bool pinned = owner_.app.settings().pinned;
    return check(footer->escLabel()->objectName() == "hint-esc" && footer->escLabel()->text() == "esc close",
               "footer")
        && check(
            header->pinButton()->accessibleName() == utf16(ZOLPinPolicy::accessibilityDescription(pinned)),
            "pin label")
        && check(strip->id(1) == std::string(ostrel::words(OstrelMode::overview).title)
                && strip->id(6) == std::string(ostrel::words(OstrelMode::cleanup).title) && !strip->id(9),
            "tab keys");
}

bool SelfTest::marksHold()
{
    return check(ZOLAppMarks::symbol(ZOLAppMark::ostrel) == "ostrel"
            && ZOLAppMarkView::image(ZOLAppMark::ostrel, ZOLAppMarkView::menuBarSize, true).isTemplate,
        "own mark");
}

bool SelfTest::choicesHold()
{
    constexpr std::array<std::string_view, 4> modes { "mark", "mark + value", "value", "hidden" };
    const auto holders = owner_.app.hotkeys().familyHolders();
    const auto refused = [&](std::uint32_t key, std::uint64_t modifiers, const char* character) {
        return OstrelHotkey { key, modifiers, character }.conflict(holders).has_value();
    };
    constexpr std::uint64_t optionCommand = OstrelHotkey::option | OstrelHotkey::command;
    return check(std::ranges::equal(
                     allBarDisplayModes, modes, {}, [](BarDisplayMode mode) { return rawValue(mode); }),
               "bar modes")
        && check(OstrelHotkey::fallback().display() == "⌥⌘m" && !OstrelHotkey::fallback().conflict(holders),
            "default hotkey")
        && check(refused(8, optionCommand, "c") && refused(46, OstrelHotkey::command, "m")
                && refused(40, OstrelHotkey::shift | OstrelHotkey::command, "k"),
            "refused hotkeys");
}

} // namespace ostrel
