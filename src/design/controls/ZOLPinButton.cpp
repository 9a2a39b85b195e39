// SPDX-License-Identifier: Apache-2.0
#include "design/controls/ZOLPinButton.h"

#include "design/Utf8.h"
#include "design/ZOLAppShellStyle.h"
#include "design/ZOLPinPolicy.h"

#include <utility>

namespace ostrel {

namespace {

constexpr int pinWidth = 28;

} // namespace

ZOLPinButton::ZOLPinButton(bool pinned, std::function<void(bool)> onChange)
    : ZOLShellButton(
        QString(), pinWidth, [this] { flip(); }, int(ZOLAppShellStyle::controlHeight))
    , onChange_(std::move(onChange))
{
    setObjectName(utf16(ZOLPinPolicy::pinButtonIdentifier));
    setToolTip(utf16(ZOLPinPolicy::tooltip));
    setPinned(pinned);
}

void ZOLPinButton::setPinned(bool pinned)
{
    setActive(pinned);
    setCaption(utf16(ZOLPinPolicy::glyph(pinned)));
    setAccessibleName(utf16(ZOLPinPolicy::accessibilityDescription(pinned)));
}

void ZOLPinButton::setOnChange(std::function<void(bool)> onChange) { onChange_ = std::move(onChange); }

void ZOLPinButton::flip()
{
    const bool now = !pinned();
    setPinned(now);
    const auto onChange = onChange_;
    if (onChange)
        onChange(now);
}

} // namespace ostrel
