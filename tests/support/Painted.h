// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <QPaintEvent>
#include <QRegion>
#include <QWidget>

/// What of a view on screen the toolkit has it paint, from now on.
class Painted final : public QObject {
public:
    explicit Painted(QWidget& view) { view.installEventFilter(this); }

    /// The points that were painted since the last call, once all that was asked for is.
    [[nodiscard]] int area()
    {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        int points = 0;
        for (const QRect& part : region_)
            points += part.width() * part.height();
        region_ = {};
        return points;
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            region_ |= static_cast<QPaintEvent*>(event)->region();
        return false;
    }

private:
    QRegion region_;
};
