// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/LabelHosts.h"

#include <algorithm>
#include <array>

namespace platform {

namespace {

struct Host {
    std::string_view program; ///< as far as the kernel keeps it
    std::string_view because;
};

/// Everything else was seen, or is documented, to show the icon alone.
constexpr std::array hosts {
    Host { "ayatana-indicat", "hands the label to the indicator plugins of Xfce, MATE, Budgie and others" },
    Host { "indicator-appli", "the same service under its older name" },
    Host { "unity-panel-ser", "loads the same indicator into the panel itself" },
    Host { "gnome-shell", "its indicator extension draws the label" },
    Host { "sfwbar", "a label is part of its tray item" },
    Host { "vala-panel", "its applet loads the indicator" },
    Host { "vala-panel-appm", "the same applet in a process of its own" },
    Host { "wingpanel", "its indicator for such items draws the label" },
    Host { "io.elementary.w", "the same panel under its newer name" },
};

} // namespace

bool showsLabels(std::string_view program)
{
    return std::ranges::any_of(hosts, [program](const Host& host) { return host.program == program; });
}

} // namespace platform
