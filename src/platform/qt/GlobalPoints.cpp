// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/GlobalPoints.h"

#include <QGuiApplication>
#include <QScreen>

namespace platform {

QPointF globalOrigin()
{
    const QScreen* primary = qGuiApp ? QGuiApplication::primaryScreen() : nullptr;
    return primary ? QRectF(primary->geometry()).bottomLeft() : QPointF();
}

Point toGlobal(const QPointF& point, const QPointF& origin)
{
    return { point.x() - origin.x(), origin.y() - point.y() };
}

Rect toGlobal(const QRectF& rect, const QPointF& origin)
{
    const Point corner = toGlobal(rect.bottomLeft(), origin);
    return { corner.x, corner.y, rect.width(), rect.height() };
}

QRectF toToolkit(const Rect& rect, const QPointF& origin)
{
    return { origin.x() + rect.x, origin.y() - rect.y - rect.height, rect.width, rect.height };
}

} // namespace platform
