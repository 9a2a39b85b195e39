// SPDX-License-Identifier: Apache-2.0
#include "design/controls/ZOLThemeButton.h"

#include "design/Utf8.h"
#include "design/ZOLAppShellStyle.h"

#include <utility>

namespace ostrel {

namespace {

constexpr int themeWidth = 28;

} // namespace

ZOLThemeButton::ZOLThemeButton(ZOLThemePolicy::Mode mode, std::function<void(ZOLThemePolicy::Mode)> onChange)
    : ZOLShellButton(
        QString(), themeWidth, [this] { flip(); }, int(ZOLAppShellStyle::quietHeight))
    , mode_(mode)
    , onChange_(std::move(onChange))
{
    setObjectName(utf16(ZOLThemePolicy::identifier));
    setToolTip(utf16(ZOLThemePolicy::tooltip));
    setMode(mode);
}

void ZOLThemeButton::setMode(ZOLThemePolicy::Mode mode)
{
    mode_ = mode;
    setCaption(utf16(ZOLThemePolicy::glyph(mode)));
    setAccessibleName(utf16(ZOLThemePolicy::accessibilityDescription(mode)));
}

void ZOLThemeButton::setOnChange(std::function<void(ZOLThemePolicy::Mode)> onChange)
{
    onChange_ = std::move(onChange);
}

void ZOLThemeButton::flip()
{
    using enum ZOLThemePolicy::Mode;
    const auto now = mode_ == dark ? light : dark;
    setMode(now);
    const auto onChange = onChange_;
    if (onChange)
        onChange(now);
}

} // namespace ostrel
