// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/StillImage.h"
#include "design/ThemedColor.h"
#include "design/ZOLThemePolicy.h"

#include <QImage>
#include <QPainter>
#include <QRectF>
#include <QString>
#include <QWidget>

#include <functional>

namespace ostrel {

/// A sheet of samples in one theme at one scale: sections below each other, samples beside each other, each
/// with its caption. Grows downward as it is filled.
class Sheet {
public:
    Sheet(ZOLThemePolicy::Mode theme, double ratio);

    /// Begins a section on a line of its own.
    void section(const QString& title);
    /// Begins a new row.
    void row();

    /// A view as it stands at its own size; the sheet destroys it. `prepare` gets it on screen, to give it a
    /// state that input would give it.
    void view(const QString& caption, QWidget* view, const std::function<void(QWidget&)>& prepare = {});
    /// Whatever `paint` draws into the rectangle.
    void drawing(
        const QString& caption, QSizeF size, const std::function<void(QPainter&, const QRectF&)>& paint);

    [[nodiscard]] ZOLThemePolicy::Mode theme() const { return theme_; }
    [[nodiscard]] double ratio() const { return ratio_; }
    /// The sheet as far as it is filled.
    [[nodiscard]] QImage finished();

private:
    /// The place of the next sample of that size, below its caption.
    QPointF place(const QString& caption, QSizeF size);
    void text(QPointF at, const QString& words, const QFont& font, const ThemedColor& color);

    ZOLThemePolicy::Mode theme_;
    double ratio_;
    QImage image_;
    QPainter painter_;
    double x_;
    double y_;
    double rowHeight_ = 0;
};

} // namespace ostrel
