// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QMouseEvent>
#include <QPointF>
#include <QWidget>

/// Moves the pointer over a view, without a button.
inline void moveOver(QWidget& view, QPointF at)
{
    QMouseEvent event(
        QEvent::MouseMove, at, view.mapToGlobal(at), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&view, &event);
}

/// Takes the pointer away.
inline void leave(QWidget& view)
{
    QEvent event(QEvent::Leave);
    QCoreApplication::sendEvent(&view, &event);
}
