// SPDX-License-Identifier: Apache-2.0
#include "design/controls/ZOLShellButton.h"

#include "design/controls/ShellViews.h"

#include <utility>

namespace ostrel {

ZOLShellButton::ZOLShellButton(
    const QString& title, int width, std::function<void()> handler, int height, QWidget* parent)
    : PaintedButton(ButtonKind::shellFramed, title, width, height, parent)
{
    setHandler(std::move(handler));
}

ZOLShellButton::Kind ZOLShellButton::kind() const
{
    switch (buttonKind()) {
    case ButtonKind::shellNavigation:
        return Kind::navigation;
    case ButtonKind::shellQuiet:
        return Kind::quiet;
    default:
        return Kind::framed;
    }
}

void ZOLShellButton::setKind(Kind kind)
{
    switch (kind) {
    case Kind::framed:
        setButtonKind(ButtonKind::shellFramed);
        break;
    case Kind::navigation:
        setButtonKind(ButtonKind::shellNavigation);
        break;
    case Kind::quiet:
        setButtonKind(ButtonKind::shellQuiet);
        break;
    }
}

QFont ZOLShellButton::captionFont(double size, QFont::Weight weight) const
{
    return ZOLAppShellStyle::font(size, weight);
}

} // namespace ostrel
