// SPDX-License-Identifier: Apache-2.0
#include "design/controls/OstrelButton.h"

#include "design/Fonts.h"

#include <utility>

namespace ostrel {

OstrelButton::OstrelButton(
    const QString& title, int width, std::function<void()> handler, int height, QWidget* parent)
    : PaintedButton(ButtonKind::ostrelPlain, title, width, height, parent)
{
    setHandler(std::move(handler));
}

void OstrelButton::setLabel(const QString& text)
{
    setCaption(text);
    setAccessibleName(caption());
}

void OstrelButton::setNavigation(bool navigation)
{
    setButtonKind(navigation ? ButtonKind::ostrelNavigation : ButtonKind::ostrelPlain);
}

QFont OstrelButton::captionFont(double size, QFont::Weight weight) const
{
    return OstrelStyle::mono(size, weight);
}

OstrelButton* ostrelTip(OstrelButton* button, const QString& text)
{
    button->setToolTip(text);
    return button;
}

} // namespace ostrel
