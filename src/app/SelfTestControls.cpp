// SPDX-License-Identifier: Apache-2.0
/// The steps of `SelfTest` that work the controls.
#include "app/SelfTest.h"
#include "bar/FamilyHotkeys.h"
#include "design/Appearance.h"
#include "design/Fonts.h"
#include "design/OstrelStyle.h"
#include "design/Utf8.h"
#include "design/ZOLAppShellStyle.h"
#include "design/ZOLPinPolicy.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/ShellViews.h"
#include "design/controls/ZOLHintCard.h"
#include "design/controls/ZOLShellLabel.h"
#include "design/voxel/ZOLVoxelModels.h"
#include "design/voxel/ZOLVoxelView.h"
#include "platform/Popover.h"

#include <QColor>
#include <QImage>
#include <QPixmap>
#include <QPointer>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr std::uint64_t optionCommand = OstrelHotkey::option | OstrelHotkey::command;
constexpr std::uint64_t functionFlag = 0x800000; ///< of a key event; no modifier of a hotkey

/// What a rebuilt panel is put into, shown nowhere.
class HeldContent final : public platform::Popover {
public:
    void setContentView(QWidget* view) override { view_ = view; }
    void layoutContent() override { }
    void setAnimates(bool) override { }
    void setTransient(bool) override { }
    void show(const platform::Rect&, const platform::AnchorView&, platform::Edge) override { }
    [[nodiscard]] bool isShown() const override { return false; }
    void performClose() override { }
    void close() override { }
    void setOnDidClose(platform::Job) override { }
    void makeKey() override { }
    [[nodiscard]] bool isKey() const override { return false; }

    /// Who takes it owns it.
    [[nodiscard]] QWidget* view() const { return view_; }

private:
    QPointer<QWidget> view_;
};

bool closeTo(double value, double wanted) { return std::abs(value - wanted) < 1e-9; }

ZOLThemePolicy::Mode opposite(ZOLThemePolicy::Mode mode)
{
    return mode == ZOLThemePolicy::Mode::dark ? ZOLThemePolicy::Mode::light : ZOLThemePolicy::Mode::dark;
}

} // namespace

std::string SelfTest::caption(std::string_view identifier) const
{
    for (const QWidget* view : window_.findChildren<QWidget*>(utf16(identifier)))
        if (const auto* button = dynamic_cast<const OstrelButton*>(view))
            return button->caption().toStdString();
    return {};
}

std::string SelfTest::words(std::string_view identifier) const
{
    for (const QWidget* view : window_.findChildren<QWidget*>(utf16(identifier)))
        if (const auto* label = dynamic_cast<const ZOLShellLabel*>(view))
            return label->text().toStdString();
    return {};
}

bool SelfTest::press(std::uint32_t keyCode, std::uint64_t modifiers, const std::string& characters)
{
    const bool taken = owner_.app.hotkeys().captureHotkey(
        { .keyCode = keyCode, .modifierFlags = modifiers, .characters = characters });
    owner_.app.frame().renderBody();
    return check(taken, "hotkey recorder: a key was passed on");
}

bool SelfTest::hintCard()
{
    ZOLHintCard::font = OstrelStyle::mono;
    ZOLAppShellStyle::font = OstrelStyle::mono;
    auto card = std::make_unique<ZOLHintCard>("OS pressure · warning",
        "Pressure stayed elevated. Inspect workloads.",
        std::vector<ZOLHintCard::Action> { { "inspect", {} }, { "30m", {} } }, ZOLVoxelModels::ostrel(),
        owner_.app.frame().motion(), std::function<void(const QString&)>(), 0, 400);
    ZOLHintCard& shown = *card;
    const auto panel = ZOLHintCard::makePanel(std::move(card));
    tellAbout("hint card", *panel);
    const QWidgetList inside = shown.findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
    const bool still = owner_.app.frame().motion().reduceMotion();
    if (!check(panel->width() == 400 && panel->height() >= 72, "hint card: size")
        || !check(
            shown.markView().size() == QSize(ZOLHintCard::markSize, ZOLHintCard::markSize), "hint card: mark")
        || !check(shown.actions().size() == 2 && !inside.isEmpty()
                && inside.first()->findChild<QWidget*>() != nullptr,
            "hint card: actions")
        || !check(panel->windowFlags().testFlag(Qt::WindowDoesNotAcceptFocus) && !panel->isVisible()
                && panel->contentView() == &shown,
            "hint card: panel")
        || !check(closeTo(ZOLHintCard::appearDuration(still), still ? 0 : 0.18)
                && closeTo(ZOLAppShellStyle::panelAppear(false), 0.2),
            "hint card: motion")
        || !check(!ZOLPinPolicy::pinDefault, "pin default"))
        return false;
    hintCardSize_ = fmt::format("{}x{}", panel->width(), panel->height());
    return savePicture(shown, "hint-card");
}

bool SelfTest::hotkeyRules()
{
    const auto& choices = OstrelHotkey::canonical();
    const auto holders = owner_.app.hotkeys().familyHolders();
    const auto free = [&holders](const OstrelHotkey& hotkey) { return !hotkey.conflict(holders); };
    constexpr std::string_view signature
        = "OSTREL=46/2304 Pellam Dial=8/2304 Tessit Loop=37/2304 Vormel Trim=0/2304+0/2560 ruvane=7/2304 "
          "Sillon=32/2304 macOS screenshot=20/768 macOS screenshot=21/768 macOS screenshot=23/768 "
          "macOS log out=12/768 macOS lock screen=12/4352 macOS full screen=3/4352 macOS dictionary=2/4352 "
          "macOS force quit=53/2304 macOS finder search=49/2304 macOS finder search=49/768";
    const auto moved = FamilyHotkeys::holders(OstrelHotkey::owner, { .pellamDial = [] {
        return FamilyHotkeys::Combos { { 40, 2304 } };
    } });
    const OstrelHotkey k { 40, optionCommand, "k" }, c { 8, optionCommand, "c" }, m { 46, 0, "m" };
    const OstrelHotkey three { 20, OstrelHotkey::shift | OstrelHotkey::command, "3" };
    const auto built = OstrelHotkey::fromEvent(
        { .keyCode = 46, .modifierFlags = optionCommand | functionFlag, .characters = "M" });
    const auto space
        = OstrelHotkey::fromEvent({ .keyCode = 49, .modifierFlags = optionCommand, .characters = " " });
    return check(choices.size() == 4 && choices.front() == OstrelHotkey::fallback(), "hotkey choices")
        && check(std::ranges::all_of(choices, free), "hotkey choices: one is taken")
        && check(FamilyHotkeys::signature() == signature, "hotkey tables")
        && check(k.conflict(moved) == "taken by Pellam Dial", "hotkey of a sibling that moved")
        && check(!c.conflict(moved), "hotkey that a sibling gave up")
        && check(m.conflict(holders) == "needs a modifier: hold ⌥ or ⌃", "hotkey without modifiers")
        && check(three.conflict(holders) == "taken by macOS screenshot", "hotkey of the system")
        && check(built == OstrelHotkey { 46, optionCommand, "m" }, "hotkey from an event")
        && check(space && space->display() == "⌥⌘space", "hotkey with a named key")
        && check(OstrelHotkey::isCancel(53) && OstrelHotkey::isClear(51) && OstrelHotkey::isClear(117)
                && !OstrelHotkey::isClear(46),
            "hotkey recorder's own keys");
}

bool SelfTest::hotkeyRecorder()
{
    HotkeyController& hotkeys = owner_.app.hotkeys();
    const Settings& settings = owner_.app.settings();
    const OstrelHotkey saved = settings.hotkey;
    switchTo(OstrelMode::settings);
    tellAbout("hotkey recorder", window_);
    bool choices = !caption("hotkey-default").empty();
    for (int at = 0; at < 4; ++at)
        choices &= !caption(fmt::format("hotkey-choice-{}", at)).empty();
    if (!check(caption("hotkey-field") == settings.hotkeyLabel(), "hotkey recorder: the field at rest")
        || !check(choices, "hotkey recorder: default and choices"))
        return false;
    hotkeys.armHotkeyRecorder();
    owner_.app.frame().renderBody();
    if (!check(caption("hotkey-field") == "press a combination"
                && words("hotkey-line") == "recording · esc cancels · delete clears",
            "hotkey recorder: the field records"))
        return false;
    if (!press(53, 0, "\x1b")
        || !check(!hotkeys.hotkeyRecording() && settings.hotkey == saved && words("hotkey-conflict").empty(),
            "hotkey recorder: esc cancels"))
        return false;
    hotkeys.armHotkeyRecorder();
    if (!recorderRefuses(saved) || !recorderClears(saved))
        return false;
    owner_.print("PASS: hotkey recorder offscreen; field records, esc cancels, delete clears, three refusals "
                 "print one line each; nothing stored\n");
    return true;
}

bool SelfTest::recorderRefuses(const OstrelHotkey& saved)
{
    struct Refusal {
        std::uint32_t keyCode;
        std::uint64_t modifiers;
        const char* characters;
        std::string_view told;
    };
    const std::array<Refusal, 3> refusals { {
        { 46, OstrelHotkey::command, "m", "⌘m: needs two modifiers, one alone belongs to the front app" },
        { 8, optionCommand, "c", "⌥⌘c: taken by Pellam Dial" },
        { 20, OstrelHotkey::shift | OstrelHotkey::command, "3", "⇧⌘3: taken by macOS screenshot" },
    } };
    const HotkeyController& hotkeys = owner_.app.hotkeys();
    return std::ranges::all_of(refusals, [&](const Refusal& refusal) {
        return press(refusal.keyCode, refusal.modifiers, refusal.characters)
            && check(hotkeys.hotkeyRecording() && owner_.app.settings().hotkey == saved
                    && words("hotkey-conflict") == refusal.told,
                fmt::format("hotkey recorder: refusal \"{}\"", refusal.told));
    });
}

bool SelfTest::recorderClears(const OstrelHotkey& saved)
{
    Settings& settings = owner_.app.settings();
    if (!press(51, 0, "\x7f")
        || !check(!owner_.app.hotkeys().hotkeyRecording() && settings.hotkeyCleared
                && settings.hotkeyLabel() == "none" && caption("hotkey-field") == "none"
                && words("hotkey-line") == "panel: none · the bar item and the routes stay the way in",
            "hotkey recorder: delete clears"))
        return false;
    settings.hotkeyCleared = false;
    settings.hotkey = saved;
    owner_.app.frame().renderBody();
    return check(caption("hotkey-field") == saved.display(), "hotkey recorder: the field afterwards");
}

bool SelfTest::doors()
{
    constexpr int lowest = 44;
    constexpr std::array<std::pair<const char*, OstrelMode>, 4> pairs { {
        { "agents & terminals", OstrelMode::sessions },
        { "inspect / stop a process", OstrelMode::processes },
        { "review cleanup", OstrelMode::cleanup },
        { "continue on server", OstrelMode::server },
    } };
    owner_.app.snapshots().show(snapshot_, "local CLI", "snapshot received");
    for (const auto& [text, mode] : pairs) {
        switchTo(OstrelMode::overview);
        tellAbout("doors", window_);
        OstrelButton* door = nullptr;
        for (QWidget* view : window_.findChildren<QWidget*>())
            if (auto* button = dynamic_cast<OstrelButton*>(view); button && button->caption() == text) {
                door = button;
                break;
            }
        if (!check(door != nullptr, fmt::format("dashboard door \"{}\": there is none", text))
            || !check(door->height() >= lowest && door->isEnabled(),
                fmt::format("dashboard door \"{}\": too low, or off", text)))
            return false;
        door->click();
        if (!check(owner_.app.frame().mode() == mode,
                fmt::format("dashboard door \"{}\": leads elsewhere", text)))
            return false;
    }
    owner_.print("PASS: four 44pt dashboard buttons navigate to their working views\n");
    return true;
}

bool SelfTest::themes()
{
    using Mode = ZOLThemePolicy::Mode;
    auto held = std::make_unique<HeldContent>();
    const HeldContent& content = *held;
    owner_.app.panel().keepIn(std::move(held));
    for (const Mode mode : { Mode::light, Mode::dark, Mode::light }) {
        ZOLThemePolicy::apply(opposite(mode));
        owner_.app.theme().setTheme(mode);
        if (!check(content.view() != nullptr, "theme: the panel isn't built anew"))
            return false;
        if (!theme(mode, *content.view()))
            return false;
    }
    owner_.app.panel().keepIn(nullptr);
    owner_.print(
        "PASS: actual light → dark → light switch under opposite ambient appearance; rendered canvas "
        "pixels and inherited appearance\n");
    owner_.print(fmt::format("PASS: shared hint card offscreen {}; appear 0.18 s / panel 0.2 s from tokens; "
                             "pin default off\n",
        hintCardSize_));
    return true;
}

bool SelfTest::theme(ZOLThemePolicy::Mode mode, QWidget& content)
{
    setAppearance(content, OstrelStyle::theme(owner_.app.services().defaults));
    hold(&content);
    tellAbout("theme", content);
    const QImage picture = window_.grab().toImage();
    const QColor pixel = picture.pixelColor(2, picture.height() / 2);
    const bool dark = mode == ZOLThemePolicy::Mode::dark;
    return check(dark ? pixel.redF() < 0.2F : pixel.redF() > 0.9F,
               fmt::format("Theme canvas failed: {} pixel={}", ZOLThemePolicy::rawValue(mode),
                   pixel.name().toStdString()))
        && check(appearanceOf(content) == mode, "theme: the content's own appearance");
}

bool SelfTest::runner()
{
    CollectorRunner& collector = owner_.app.collector();
    const auto slow = collector.run(
        { .executable = "/bin/sleep", .arguments = { "20" }, .timeout = platform::Seconds(0.15) });
    if (!check(slow.status != 0 && slow.elapsed < 2, "collector deadline"))
        return false;
    const auto failing = collector.run({ .executable = "/usr/bin/false", .arguments = {} });
    if (!check(failing.status != 0, "collector nonzero exit"))
        return false;
    owner_.print("PASS: collector deadline and nonzero exit\n");
    return true;
}

} // namespace ostrel
