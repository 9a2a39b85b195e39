// SPDX-License-Identifier: Apache-2.0
#include "panel/GaugeRules.h"

#include "core/Text.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

namespace ostrel {

namespace GaugeRules {

namespace {

/// Below this share of the ring an arc would be a lone dot.
constexpr double leastShare = 0.001;
/// Between the ring's outer edge and that of the view.
constexpr double margin = 1;
/// The lines of text stand around a line half a radius below the centre.
constexpr double valueRise = 5;
constexpr double captionDrop = 11;

} // namespace

double shown(double pct) { return pct > 0 ? std::min(pct, 100.0) : 0.0; }

double easeInOut(double t)
{
    const double rest = 2 - 2 * t;
    return t < 0.5 ? 4 * t * t * t : 1 - rest * rest * rest / 2;
}

std::string_view levelMark(std::string_view level, bool differentiateWithoutColor)
{
    if (!differentiateWithoutColor)
        return "";
    if (level == "crit")
        return "▲ ";
    return level == "warn" ? "△ " : "";
}

std::string valueText(std::string_view mark, double pct) { return fmt::format("{}{}%", mark, rounded(pct)); }

double sweep(double pct)
{
    const double share = pct / 100;
    return share > leastShare ? 360 * share : 0;
}

Geometry geometry(double diameter)
{
    const double radius = (diameter - ringWidth) / 2 - margin;
    const double middle = diameter / 2;
    const double around = middle + radius / 2;
    return { middle, radius, around - valueRise, around + captionDrop };
}

} // namespace GaugeRules

namespace {

/// A way shorter than this, in percent, can't be seen.
constexpr double shortestWay = 0.4;

} // namespace

void GaugeMotion::stand(double pct)
{
    displayed_ = from_ = to_ = GaugeRules::shown(pct);
    progress_ = 1;
}

bool GaugeMotion::setOut(double to, bool moves)
{
    from_ = displayed_;
    to_ = GaugeRules::shown(to);
    if (!moves || std::abs(to_ - from_) < shortestWay) {
        arrive();
        return false;
    }
    progress_ = 0;
    return true;
}

bool GaugeMotion::step()
{
    progress_ = std::min(1.0, progress_ + GaugeRules::frame / GaugeRules::duration);
    displayed_ = from_ + (to_ - from_) * GaugeRules::easeInOut(progress_);
    return moving();
}

void GaugeMotion::arrive()
{
    progress_ = 1;
    displayed_ = to_;
}

} // namespace ostrel
