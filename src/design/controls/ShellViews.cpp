// SPDX-License-Identifier: Apache-2.0
#include "design/controls/ShellViews.h"

#include "design/Fonts.h"
#include "design/controls/ZOLShellLabel.h"

namespace ostrel::ZOLAppShellStyle {

std::function<QFont(double, QFont::Weight)> font = plexMono;

ZOLShellLabel* label(const QString& text, double size, QFont::Weight weight, const ThemedColor& color)
{
    return new ZOLShellLabel(text, font(size, weight), color);
}

QWidget* spacer()
{
    auto* view = new QWidget;
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setHorizontalStretch(1);
    view->setSizePolicy(policy);
    view->setAttribute(Qt::WA_TransparentForMouseEvents);
    return view;
}

} // namespace ostrel::ZOLAppShellStyle
