// SPDX-License-Identifier: Apache-2.0
#include "design/controls/FieldGround.h"

#include "design/Appearance.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"

#include <QPainter>
#include <QPalette>
#include <QWidget>

namespace ostrel {

namespace {

constexpr double ringInset = 2;

} // namespace

void paintFieldGround(QPainter& painter, const QWidget& field)
{
    const auto mode = appearanceOf(field);
    const QRectF bounds(field.rect());
    fillRounded(painter, bounds, OstrelStyle::radius, OstrelStyle::bg.in(mode));
    outlineRounded(painter, bounds, OstrelStyle::radius, OstrelStyle::hair.in(mode));
    if (field.hasFocus())
        drawFocusRing(painter, bounds, ringInset, OstrelStyle::radius - ringInset, OstrelStyle::ink.in(mode));
}

void showThrough(QWidget& field)
{
    if (field.palette().color(QPalette::Base).alpha() == 0)
        return;
    QPalette own;
    own.setColor(QPalette::Base, Qt::transparent);
    field.setPalette(own);
}

} // namespace ostrel
