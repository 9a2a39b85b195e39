// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/DesignBench.h"
#include "support/QtEnvironment.h"
#include "support/Rendering.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QWidget>
#include <QWindow>

#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

/// Brings the view on screen.
inline void exposed(QWidget& view)
{
    view.show();
    ASSERT_TRUE(spinUntil([&] { return view.window()->windowHandle()->isExposed(); }));
}

/// Whether the view took the key.
inline bool sendKey(QWidget& view, int key, Qt::KeyboardModifiers modifiers = {}, bool repeated = false)
{
    QKeyEvent event(QEvent::KeyPress, key, modifiers, QString(), repeated);
    QCoreApplication::sendEvent(&view, &event);
    return event.isAccepted();
}

inline void sendButton(QObject& view, QEvent::Type type, Qt::MouseButton button = Qt::LeftButton)
{
    const QPointF at(9, 9);
    const auto held = type == QEvent::MouseButtonPress ? button : Qt::NoButton;
    QMouseEvent event(type, at, at, button, held, Qt::NoModifier);
    QCoreApplication::sendEvent(&view, &event);
}

inline void press(QObject& view, Qt::MouseButton button = Qt::LeftButton)
{
    sendButton(view, QEvent::MouseButtonPress, button);
}

inline void click(QObject& view, Qt::MouseButton button = Qt::LeftButton)
{
    press(view, button);
    sendButton(view, QEvent::MouseButtonRelease, button);
}

/// The rectangle around those pixels of a part of the picture that match.
template <typename Matches>
QRect around(const QImage& image, const QRect& part, Matches matches)
{
    QRect all;
    for (int y = part.top(); y <= part.bottom(); ++y)
        for (int x = part.left(); x <= part.right(); ++x)
            if (matches(image.pixel(x, y)))
                all |= QRect(x, y, 1, 1);
    return all;
}
