// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/qt/PopoverShadow.h"

#include <functional>
#include <vector>

#include <QImage>
#include <QVariantAnimation>
#include <QWidget>
#include <xcb/xcb.h>

namespace platform {

/// A popover's window: its content and what surrounds it. Where a compositor runs that is a translucent
/// margin with a shadow, through which presses reach what lies below; elsewhere the window ends where the
/// content does, cut to round corners. Main thread.
class PopoverWindow final : public QWidget {
public:
    /// `closeAsked` is called when the window manager wants it closed, which it doesn't do by itself.
    PopoverWindow(double cornerRadius, std::function<void()> closeAsked);

    /// Takes a view over, at the place of the one before, which goes in a later turn of the loop. While the
    /// window is shown the new one gets the size of the old one, and the keyboard if the old one had it.
    void setContent(QWidget* content);
    [[nodiscard]] QWidget* content() const { return content_; }

    /// Comes up with the content at that place, in the toolkit's coordinates.
    void appear(const QRect& place, bool fades);
    /// Goes at once.
    void vanish();

    /// Not for callers.
    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void setTranslucent(bool translucent);
    [[nodiscard]] int margin() const;
    /// Tells the display and the window manager which part of the window counts.
    void describe(xcb_connection_t* connection);

    PopoverShadow shadow_;
    std::vector<xcb_rectangle_t> pressable_; ///< in pixels; empty where that is the whole window
    QImage shadowImage_;
    double shadowRatio_ = 0; ///< the number of pixels in a point that it was made for
    std::function<void()> closeAsked_;
    QVariantAnimation fade_;
    QWidget* content_ = nullptr;
    bool translucent_ = false;
};

} // namespace platform
