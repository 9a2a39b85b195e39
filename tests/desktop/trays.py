# SPDX-License-Identifier: Apache-2.0
"""The trays that a private desktop can have: what each needs, how it is started and where its strip lies."""
from typing import NamedTuple

HEIGHT = 28  # of a strip, in pixels
_XFCE = ["xfce4-panel", "--disable-wm-check", "--sm-client-disable"]
_INDICATORS = "/usr/libexec/ayatana-indicator-application/ayatana-indicator-application-service"
_XFCE_SETTINGS = ".config/xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml"


class Tray(NamedTuple):
    """One kind of tray. `takes_items`: over the bus; the others take windows in."""
    packages: list[tuple[str, str]]  # like PACKAGES of a private desktop
    commands: list[list[str]]
    files: dict[str, str]  # by their path in the home; "{home}" in a command stands for the home
    takes_items: bool = True
    top: bool = True
    opens_menu: bool = False  # on a left click, by itself
    shows_label: bool = False


def _xfce_settings(plugin: str, position: int) -> dict[str, str]:
    """One strip along an edge: a gap that takes the room, then the plugin."""
    return {_XFCE_SETTINGS: f"""<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array"> <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p={position};x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="{HEIGHT}"/>
      <property name="plugin-ids" type="array"> <value type="int" value="1"/> <value type="int" value="2"/>
    </property> </property> </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="separator">
      <property name="expand" type="bool" value="true"/> <property name="style" type="uint" value="0"/>
    </property>
    <property name="plugin-2" type="string" value="{plugin}"/>
  </property>
</channel>
"""}


_XFCE_PACKAGES = [("xfce4-panel", "xfce4-panel"),
                  ("/usr/share/dbus-1/services/org.xfce.Xfconf.service", "xfconf")]

TRAYS = {
    "none": Tray([], [], {}, takes_items=False),
    "xfce": Tray(_XFCE_PACKAGES, [_XFCE], _xfce_settings("systray", 11)),
    "xfce-bottom": Tray(_XFCE_PACKAGES, [_XFCE], _xfce_settings("systray", 12), top=False),
    "xfce-indicators": Tray(
        _XFCE_PACKAGES + [(_INDICATORS, "ayatana-indicator-application"),
                          ("/usr/share/xfce4/panel/plugins/indicator.desktop", "xfce4-indicator-plugin")],
        [[_INDICATORS], _XFCE], _xfce_settings("indicator", 11), opens_menu=True, shows_label=True),
    "lxqt": Tray([("lxqt-panel", "lxqt-panel")], [["lxqt-panel"]], {".config/lxqt/panel.conf": f"""[General]
panels=panel1
[panel1]
plugins=gap, items
position=Bottom
panelSize={HEIGHT}
[gap]
type=spacer
expandable=true
[items]
type=statusnotifier
"""}, top=False),
    "trayer": Tray([("trayer", "trayer")], [[
        "trayer", "--edge", "top", "--align", "right", "--widthtype", "percent", "--width", "50",
        "--heighttype",
        "pixel", "--height", str(HEIGHT), "--SetPartialStrut", "true"]], {}, takes_items=False),
    "tint2": Tray([("tint2", "tint2")], [["tint2", "-c", "{home}/tint2rc"]], {"tint2rc": f"""rounded = 0
background_color = #204060 100
panel_items = FS
panel_position = bottom center horizontal
panel_size = 100% {HEIGHT}
panel_background_id = 1
strut_policy = follow_size
systray_padding = 2 2 2
"""}, takes_items=False, top=False),
}
