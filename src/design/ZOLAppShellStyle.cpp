// SPDX-License-Identifier: Apache-2.0
#include "design/ZOLAppShellStyle.h"

namespace ostrel::ZOLAppShellStyle {

namespace {

std::string_view semantic(std::string_view token, std::string_view fallback)
{
    return ZOLMiniAppTokens::N1.semantic.find(token).value_or(fallback);
}

} // namespace

double length(std::string_view semanticToken, double fallback)
{
    return ZOLMiniAppTokens::number(semantic(semanticToken, {})).value_or(fallback);
}

double controlRadius() { return length("radius-control", 8); }

double footerSize() { return length("size-meta", 11); }

double panelAppear(bool reduceMotion)
{
    return ZOLMiniAppTokens::seconds(semantic("motion-panel-appear", "200ms"), reduceMotion);
}

double windowAppear(bool reduceMotion)
{
    return ZOLMiniAppTokens::seconds(semantic("motion-window-appear", "180ms"), reduceMotion);
}

double windowAppearShift(bool reduceMotion)
{
    return reduceMotion ? 0 : length("motion-window-appear-shift", 6);
}

} // namespace ostrel::ZOLAppShellStyle
