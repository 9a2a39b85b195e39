// SPDX-License-Identifier: Apache-2.0
#include "design/OstrelStyle.h"

#include <QFontDatabase>
#include <QString>

#include <algorithm>

namespace ostrel {

namespace {

constexpr double smallestSize = 10;

} // namespace

OstrelStyle::OstrelStyle(ZOLThemePolicy::Mode mode)
{
    const bool dark = mode == ZOLThemePolicy::Mode::dark;
    bg = QColor(dark ? 0x202124 : 0xffffff);
    ink = QColor(dark ? 0xf2f3f5 : 0x202124);
    muted = QColor(dark ? 0x9aa0a6 : 0x6b6e75);
    hair = QColor(dark ? 0x3c4043 : 0xe8e9ed);
    fill = QColor(dark ? 0x2d2e31 : 0xf2f3f5);
    hover = QColor(dark ? 0x2d2e31 : 0xf5f6f8);
    red = QColor(0xdb303d);
}

QFont OstrelStyle::mono(double size, QFont::Weight weight)
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    // Sizes are in the panel's points, which are logical pixels.
    font.setPixelSize(qRound(std::max(size, smallestSize)));
    font.setWeight(weight);
    return font;
}

QPalette OstrelStyle::palette() const
{
    QPalette palette;
    palette.setColor(QPalette::Window, bg);
    palette.setColor(QPalette::Base, bg);
    palette.setColor(QPalette::Button, fill);
    palette.setColor(QPalette::AlternateBase, fill);
    for (const auto role : { QPalette::WindowText, QPalette::Text, QPalette::ButtonText })
        palette.setColor(role, ink);
    palette.setColor(QPalette::Highlight, red);
    palette.setColor(QPalette::Mid, hair);
    return palette;
}

} // namespace ostrel
