// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/PopoverWindow.h"

#include "platform/qt/DisplayFacts.h"
#include "platform/qt/WindowHints.h"
#include "platform/qt/WindowShape.h"
#include "platform/qt/Xcb.h"
#include "platform/qt/XcbEventFilter.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <utility>

#include <QApplication>
#include <QCloseEvent>
#include <QPainter>
#include <QScreen>
#include <QWindow>

namespace platform {

namespace {

constexpr int fadeMilliseconds = 200;

} // namespace

PopoverWindow::PopoverWindow(double cornerRadius, std::function<void()> closeAsked)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint)
    , shadow_ { .radius = cornerRadius }
    , closeAsked_(std::move(closeAsked))
{
    setWindowTitle("OSTREL");
    setAccessibleName("OSTREL");
    fade_.setStartValue(0.0);
    fade_.setEndValue(1.0);
    fade_.setDuration(fadeMilliseconds);
    fade_.setEasingCurve(QEasingCurve::OutCubic);
    connect(&fade_, &QVariantAnimation::valueChanged, this,
        [this](const QVariant& value) { setWindowOpacity(value.toDouble()); });
}

void PopoverWindow::setContent(QWidget* content)
{
    QWidget* const before = std::exchange(content_, content);
    if (before == content)
        return;
    setUpdatesEnabled(false); // one picture, with the new view in it
    if (content) {
        content->setParent(this);
        if (isVisible() && before)
            content->resize(before->size());
        content->move(margin(), margin());
        content->show();
    }
    if (before) {
        const QWidget* const focused = focusWidget();
        const bool hadKeyboard = focused && (focused == before || before->isAncestorOf(focused));
        before->hide();
        before->deleteLater();
        if (content && hadKeyboard)
            content->setFocus();
    }
    setUpdatesEnabled(true);
}

void PopoverWindow::appear(const QRect& place, bool fades)
{
    xcb_connection_t* const connection = toolkitXConnection();
    // A Wayland desktop always composes its windows, and the toolkit without a screen never does.
    setTranslucent(connection ? hasCompositor(connection) : QGuiApplication::platformName() == "wayland");
    const int around = margin();
    const QRect window = place.adjusted(-around, -around, around, around);
    if (QScreen* const display = QGuiApplication::screenAt(place.center()); display && display != screen())
        setScreen(display);
    setFixedSize(window.size()); // nobody else's to change
    move(window.topLeft());
    if (content_)
        content_->setGeometry(QRect(QPoint(around, around), place.size()));
    if (connection) {
        describe(connection);
        keepOutOfTaskbar(*this);
    }
    if (fades && translucent_) {
        setWindowOpacity(0);
        fade_.start();
    }
    show();
    // After a hiding in the same turn the toolkit still counts the window as the one with the keyboard, but
    // no widget as active any more, and would never again.
    if (windowHandle() == QGuiApplication::focusWindow() && !isActiveWindow())
        QApplication::setActiveWindow(this);
}

void PopoverWindow::vanish()
{
    fade_.stop();
    hide();
    setWindowOpacity(1);
}

bool PopoverWindow::eventFilter(QObject* watched, QEvent* event)
{
    // Some window managers hear of this shape alone, and don't look at it when they put their frame around
    // the window: so it is told again once they have.
    if (event->type() == QEvent::Expose && watched == windowHandle() && !pressable_.empty())
        if (xcb_connection_t* const connection = toolkitXConnection())
            limitInput(connection, static_cast<xcb_window_t>(winId()), pressable_);
    return QWidget::eventFilter(watched, event);
}

void PopoverWindow::paintEvent(QPaintEvent* event)
{
    const int around = margin();
    const QRect inside = rect().adjusted(around, around, -around, -around);
    const int corner = static_cast<int>(std::ceil(shadow_.radius));
    // Most pictures are of the content alone.
    const bool corners = !inside.adjusted(corner, 0, -corner, 0).contains(event->rect())
        && !inside.adjusted(0, corner, 0, -corner).contains(event->rect());
    QPainter painter(this);
    if (!translucent_) {
        painter.fillRect(event->rect(), palette().window());
    } else if (corners) {
        const double ratio = devicePixelRatioF();
        if (shadowRatio_ != ratio) {
            shadowImage_ = shadow_.image(ratio);
            shadowRatio_ = ratio;
        }
        shadow_.draw(painter, shadowImage_, size());
    }
}

void PopoverWindow::closeEvent(QCloseEvent* event)
{
    // The window is kept for the next time.
    event->ignore();
    closeAsked_();
}

void PopoverWindow::setTranslucent(bool translucent)
{
    if (translucent == translucent_)
        return;
    // The display gives a window its depth when it is made.
    destroy();
    translucent_ = translucent;
    setAttribute(Qt::WA_TranslucentBackground, translucent);
    setAttribute(Qt::WA_NoSystemBackground, translucent);
}

int PopoverWindow::margin() const { return translucent_ ? static_cast<int>(shadow_.margin) : 0; }

void PopoverWindow::describe(xcb_connection_t* connection)
{
    const auto window = static_cast<xcb_window_t>(winId());
    const double ratio = devicePixelRatioF();
    const auto pixels = [ratio](double points) { return static_cast<int>(std::lround(points * ratio)); };
    const int around = pixels(margin());
    const int insideWidth = pixels(width()) - around * 2, insideHeight = pixels(height()) - around * 2;
    auto stripes = roundedStripes(insideWidth, insideHeight, pixels(shadow_.radius));
    pressable_.clear();
    if (!translucent_) {
        cutWindow(connection, window, stripes);
        return;
    }
    for (xcb_rectangle_t& stripe : stripes) {
        stripe.x = static_cast<std::int16_t>(stripe.x + around);
        stripe.y = static_cast<std::int16_t>(stripe.y + around);
    }
    limitInput(connection, window, stripes);
    pressable_ = std::move(stripes);
    windowHandle()->installEventFilter(this);
    std::array<std::uint32_t, 4> extents {};
    extents.fill(static_cast<std::uint32_t>(around));
    const xcb_atom_t name = internAtoms(connection, { "_GTK_FRAME_EXTENTS" })[0];
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, name, XCB_ATOM_CARDINAL, 32,
        extents.size(), extents.data());
}

} // namespace platform
