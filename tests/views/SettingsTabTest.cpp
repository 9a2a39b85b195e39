// SPDX-License-Identifier: Apache-2.0
#include "views/OpenTab.h"

#include <fmt/format.h>

namespace {

using namespace ostrel;

struct OpenSettings : OpenTab {
    OpenSettings()
        : OpenTab(OstrelMode::settings)
    {
        work();
    }

    bool key(std::uint32_t keyCode, std::uint64_t flags, const char* characters)
    {
        const bool taken = mouse.press({ keyCode, flags, characters });
        settle();
        return taken;
    }
    /// The buttons between two of them, "[on]" and "(off)"; the later end is left out.
    [[nodiscard]] std::string buttons(const QString& first, const QString& end)
    {
        std::string text;
        bool inside = false;
        for (const OstrelButton* one : ::all<OstrelButton>(page())) {
            inside = (inside || one->caption() == first) && one->caption() != end;
            const char* const shape = one->isActive() ? "[{}] {} " : one->isEnabled() ? "{} {} " : "({}) {} ";
            if (inside)
                text += fmt::format(fmt::runtime(shape), one->caption().toStdString(), one->width());
        }
        return text;
    }
    [[nodiscard]] QLabel* label(const char* identifier) { return page().findChild<QLabel*>(identifier); }
    [[nodiscard]] std::string line(const char* identifier)
    {
        return label(identifier) ? label(identifier)->text().toStdString() : "no line";
    }
    [[nodiscard]] std::string stored(const char* name)
    {
        const std::string key = std::string(name).find('.') == std::string::npos
            ? "dev.quent.ostrel." + std::string(name)
            : name;
        if (const auto flag = defaults.boolean(key))
            return *flag ? "true" : "false";
        return defaults.text(key).value_or("absent");
    }
};

TEST(SettingsTab, SaysWhatItHasFromTheTopDown)
{
    OpenSettings tab;
    tab.expectInOrder({ "menu bar",
        "the mark is in the bar by default. `mark + value` adds cpu and swap, `value` drops the mark, "
        "`hidden` takes the item out of the bar and leaves ⌥⌘m as the way back.",
        "menu bar · mark", "the parts belong to `mark + value` and `value`; this mode draws no value.",
        "panel",
        "pin keeps the panel open on a click outside, off by default, the circle in the header. the "
        "theme "
        "turns the panel white or black, white by default, the switch in the footer.",
        "hotkey", "panel: ⌥⌘m · opens and closes from anywhere",
        "a combination needs two modifiers and stays off the ones Pellam Dial, Tessit Loop, Vormel Trim "
        "and macOS already hold; a refusal prints here in red and is not stored.",
        "automations", "janitor", "refresh & motion",
        "native readings every 5s · process details every 15s while open · server checks run on demand",
        "hints need 20s of continuous os pressure, one per pressure episode, with a restart-safe 30m "
        "cooldown. 30m snoozes, inspect acknowledges the hint. macOS Reduce Motion is respected.",
        "hint history · local", "empty · no automatic hints recorded",
        "hint receipts describe display and acknowledgement only, workload actions have their own "
        "results",
        "OSTREL 0.9.0 · native instrument",
        "readings stay on this Mac. a server task receives only the workspace and task text you submit. "
        "existing apps and sessions stay under your control." });
    EXPECT_TRUE(tab.texts().contains("make the menu bar yours"));
    EXPECT_EQ(tab.buttons("mark", "open receipts"),
        "[mark] 104 mark + value 104 value 104 hidden 104 [cpu] 92 (mem) 92 [swap] 92 (load) 92 (mcp) 92 "
        "keep panel open 186 [white] 96 black 96 ⌥⌘m 216 default ⌥⌘m 140 [⌥⌘m] 78 ⌃⌥m 78 ⌥⇧m 78 ⌥⌘p 78 ");
    EXPECT_EQ(std::ranges::count(tab.page().findChildren<QWidget*>(), QSize(728, 1), &QWidget::size), 5)
        << "a line below each section, but none below the history of hints and the footer";
    tab.expectWithinTheTab();
    for (const char* own :
        { "hidden", "mcp", "keep panel open", "theme-dark", "hotkey-field", "hotkey-default",
            "hotkey-choice-1", "calm", "voxel motion · on", "pressure hints · on", "preview companion" })
        EXPECT_FALSE(tab.control(own)->toolTip().isEmpty()) << own;
}

TEST(SettingsTab, EachControlStoresItsChoiceAndShowsIt)
{
    OpenSettings tab;
    for (const auto& [control, key, value, shown] :
        std::vector<std::tuple<QString, const char*, std::string, QString>> {
            { "mark + value", "barmode", "mark + value", "menu bar · mark + value" },
            { "value", "barmode", "value", "menu bar · value" },
            { "keep panel open", "pinned", "true", "pin keeps the panel" },
            { "unpin panel", "pinned", "false", "pin keeps the panel" },
            { "theme-dark", "theme", "dark", "make" },
            { "theme-light", "theme", "light", "make" },
            { "hotkey-choice-3", "hotkey", "35:1572864:p", "panel: ⌥⌘p" },
            { "hotkey-default", "hotkey", "46:1572864:m", "panel: ⌥⌘m" },
            { "calm", "refresh", "calm", "native readings every 10s" },
            { "fast", "refresh", "fast", "native readings every 3s" },
            { "voxel motion · on", "ostrel.motion", "false", "make" },
            { "pressure hints · on", "ostrel.hints", "false", "make" },
            { "pressure hints · off", "ostrel.hints", "true", "make" },
        }) {
        tab.press(control);
        EXPECT_EQ(tab.stored(key), value) << control.toStdString();
        EXPECT_FALSE(tab.texts().filter(shown).isEmpty()) << control.toStdString();
    }
    EXPECT_TRUE(tab.control("fast")->isActive());
    EXPECT_TRUE(tab.control("theme-light")->isActive());
    EXPECT_TRUE(tab.control("voxel motion · off"));
    tab.press("mem");
    tab.press("cpu");
    EXPECT_EQ(
        tab.defaults.textArray("dev.quent.ostrel.barparts"), (std::vector<std::string> { "mem", "swap" }));
    EXPECT_TRUE(tab.said().contains("the value carries: mem + swap"));
    const std::string before = tab.line("bar-preview-value");
    EXPECT_EQ(before, "mem 74% · swap 38%") << "without the mark";
    tab.kernel.reading.usedBytes = 7936 * OpenTab::mb;
    const QLabel* const value = tab.label("bar-preview-value");
    tab.tick(20);
    EXPECT_EQ(value, tab.label("bar-preview-value")) << "nothing is drawn anew";
    EXPECT_EQ(tab.line("bar-preview-value"), "mem 50% · swap 38%");

    tab.delegate.panel().setPinned(true);
    EXPECT_TRUE(tab.control("unpin panel")) << "the header's switch is the same";
    tab.press("preview companion");
    EXPECT_FALSE(tab.delegate.panel().shown()) << "the sample takes its place";
    EXPECT_TRUE(tab.delegate.hints().hintPolicy().receipts.empty());
}

TEST(SettingsTab, HiddenAsksFirstAndTheQuestionOutlivesAChangeOfTab)
{
    OpenSettings tab;
    const QString question
        = "hidden removes OSTREL from the menu bar. ⌥⌘m still opens the panel, and settings "
          "bring the mark back.";
    tab.press("hidden");
    EXPECT_EQ(tab.stored("barmode"), "mark");
    EXPECT_TRUE(tab.said().contains(question));
    tab.delegate.frame().switchMode(OstrelMode::overview);
    tab.delegate.frame().switchMode(OstrelMode::settings);
    EXPECT_TRUE(tab.said().contains(question));
    tab.press("keep the mark");
    EXPECT_FALSE(tab.said().contains(question));
    tab.press("hidden");
    tab.press("value");
    EXPECT_FALSE(tab.said().contains(question)) << "another choice drops it";
    tab.press("hidden");
    tab.press("confirm-hidden");
    EXPECT_EQ(tab.stored("barmode"), "hidden");
    EXPECT_FALSE(tab.said().contains(question));
    EXPECT_TRUE(tab.said().contains("hidden · no item in the bar"));
}

TEST(SettingsTab, TheFieldRecordsWhatIsTypedAndARefusalStandsInRed)
{
    OpenSettings tab;
    constexpr std::uint64_t both = platform::ModifierFlag::option | platform::ModifierFlag::command;
    tab.press("hotkey-field");
    const std::vector red { qColor(OstrelStyle::red.light) };
    EXPECT_EQ(tab.colors("recording · esc cancels · delete clears"), red);
    EXPECT_TRUE(tab.control("hotkey-field")->isActive());
    EXPECT_EQ(tab.control("hotkey-field")->caption(), "press a combination");
    EXPECT_TRUE(tab.key(8, both, "c"));
    EXPECT_EQ(tab.colors("⌥⌘c: taken by Pellam Dial"), red);
    EXPECT_EQ(tab.stored("hotkey"), "absent");
    EXPECT_TRUE(tab.key(35, both, "p"));
    EXPECT_EQ(tab.line("hotkey-conflict"), "no line");
    EXPECT_EQ(tab.line("hotkey-line"), "panel: ⌥⌘p · opens and closes from anywhere");
    EXPECT_EQ(tab.stored("hotkey"), "35:1572864:p");
    EXPECT_TRUE(tab.control("hotkey-choice-3")->isActive());
    EXPECT_FALSE(tab.key(46, both, "m")) << "not armed any more";
    tab.press("hotkey-field");
    tab.key(51, 0, "");
    EXPECT_EQ(tab.control("hotkey-field")->caption(), "none");
}

} // namespace
