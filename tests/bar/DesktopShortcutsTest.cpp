// SPDX-License-Identifier: Apache-2.0
#include "bar/DesktopShortcuts.h"

#include "support/FakeFileManager.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using namespace ostrel;

constexpr std::uint64_t shift = OstrelHotkey::shift, control = OstrelHotkey::control,
                        option = OstrelHotkey::option, command = OstrelHotkey::command;

constexpr const char* xfceText = R"(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-keyboard-shortcuts" version="1.0">
  <property name="commands" type="empty"><property name="custom" type="empty">
      <property name="&lt;Alt&gt;&lt;Super&gt;m" type="string" value="music &amp; &quot;more&quot;"/>
      <property name="&lt;Primary&gt;&lt;Alt&gt;Left" type="string"
                value="go-left"/>
      <!-- <property name="&lt;Alt&gt;q" type="string" value="gone"/> -->
      <property name="&lt;Alt&gt;r" type="empty"/>
      <property name="&lt;Hyper&gt;h" type="string" value="no such modifier"/>
      <property name="override" type="bool" value="true"/>)";

constexpr const char* openboxText = R"(<openbox_config><keyboard>
  <keybind key="A-W-m A-F4"><action name="Close"/><action name="Raise"/></keybind>
  <keybind key='C-S-Up'>
    <action
      name="Execute"><command>x</command></action></keybind>
  <mousebind button="A-Left"><action name="Move"/></mousebind></keyboard>)";

constexpr const char* plasmaText = "[kwin]\n_k_friendly_name=KWin\n"
                                   "Overview=Meta+Alt+M\\tMeta+W,Meta+W,Toggle\\, the overview\n"
                                   "Nothing=none,none,Nothing\nshort=Ctrl+Alt+T\n=\nx\n";

constexpr const char* lxqtText = "[General]\nMultipleActionsBehaviour=first\n\n"
                                 "[Alt%2BMeta%2BM.41]\nComment=Music\nEnabled=true\nExec=player\n"
                                 "[Control%2BAlt%2BRight.42]\nEnabled=true\nExec=qdbus, x\n"
                                 "[Alt%2BF9.43]\nComment=Off\nEnabled=false\n[%2%zz";

TEST(DesktopShortcuts, EachDesktopsFileIsReadAsFarAsItCanBe)
{
    using Shortcuts = std::vector<DesktopShortcut>;
    EXPECT_EQ(DesktopShortcuts::xfce(xfceText),
        (Shortcuts { { option | command, "m", "music & \"more\"" }, { control | option, "←", "go-left" } }));
    EXPECT_EQ(DesktopShortcuts::openbox(openboxText),
        (Shortcuts { { option | command, "m", "Close" }, { option, "f4", "Close" },
            { control | shift, "↑", "Execute" } }));
    EXPECT_EQ(DesktopShortcuts::plasma(plasmaText),
        (Shortcuts { { command | option, "m", "Toggle, the overview" },
            { command, "w", "Toggle, the overview" }, { control | option, "t", "short" } }));
    EXPECT_EQ(DesktopShortcuts::lxqt(lxqtText),
        (Shortcuts { { option | command, "m", "Music" }, { control | option, "→", "qdbus, x" } }));

    // Cut anywhere, and with any byte in any place: nothing but what was there before comes of it.
    for (const auto& [parse, text] : { std::pair { &DesktopShortcuts::xfce, std::string(xfceText) },
             { &DesktopShortcuts::openbox, openboxText }, { &DesktopShortcuts::plasma, plasmaText },
             { &DesktopShortcuts::lxqt, lxqtText } })
        for (std::size_t at = 0; at < text.size(); ++at) {
            EXPECT_LE(parse(text.substr(0, at)).size(), 3U);
            for (const char odd : { '<', '\0', '\xff', '"', '\n' }) {
                std::string spoilt = text;
                spoilt[at] = odd;
                EXPECT_LE(parse(spoilt).size(), 4U);
            }
        }
}

TEST(DesktopShortcuts, TheHolderIsToldByTheSettingsOfTheDesktopThatRuns)
{
    FakeFileManager files;
    const auto holder = [&](const char* desktop, const OstrelHotkey& hotkey = OstrelHotkey::fallback()) {
        return DesktopShortcuts::holder(files, desktop, hotkey).value_or("");
    };
    EXPECT_EQ(holder("XFCE"), "");
    const std::string channel = "/xfce4/xfconf/xfce-perchannel-xml/xfce4-keyboard-shortcuts.xml";
    files.contents["/etc/xdg" + channel] = xfceText;
    files.contents["/etc/xdg/openbox/rc.xml"] = openboxText;
    files.contents[files.home + "/.config/kglobalshortcutsrc"] = plasmaText;
    files.contents[files.home + "/.config/lxqt/globalkeyshortcuts.conf"] = lxqtText;
    for (const auto& [desktop, name] : std::vector<std::pair<const char*, const char*>> {
             { "XFCE", "Xfce · music & \"more\"" }, { "ubuntu:xfce", "Xfce · music & \"more\"" },
             { "KDE", "Plasma · Toggle, the overview" }, { "LXQt", "LXQt · Music" }, { "", "" },
             { "LXDE:Openbox", "Openbox · Close" }, { "XFCE:Openbox", "Openbox · Close" } })
        EXPECT_EQ(holder(desktop), name) << desktop;
    EXPECT_EQ(holder("KDE", { 46, option | command | shift, "m" }), "");
    files.contents[files.home + "/.config" + channel]
        = R"(<property name="&lt;Alt&gt;&lt;Super&gt;m" type="string" value="mine"/>)";
    EXPECT_EQ(holder("XFCE"), "Xfce · mine") << "the user's own before what all begin with";
    files.contents[files.home + "/.config" + channel]
        = R"(<property name="&lt;Alt&gt;&lt;Super&gt;m" type="string" value=")" + std::string(200, 'x')
        + "\"/>";
    EXPECT_EQ(holder("XFCE"), "Xfce · " + std::string(48, 'x'));
    files.contents[files.home + "/.config" + channel] = std::string(1 << 20, '<');
    files.contents.erase("/etc/xdg" + channel);
    EXPECT_EQ(holder("XFCE:Openbox"), "Openbox · Close") << "too long to be read";
}

} // namespace
