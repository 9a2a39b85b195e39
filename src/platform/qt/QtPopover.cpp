// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtPopover.h"

#include "platform/qt/GlobalPoints.h"
#include "platform/qt/PopoverPlacement.h"
#include "platform/qt/PopoverWindow.h"
#include "platform/qt/WindowActivation.h"
#include "platform/qt/X11PressWatch.h"
#include "platform/qt/XcbEventFilter.h"

#include <optional>
#include <utility>

#include <QApplication>
#include <QElapsedTimer>
#include <QLayout>
#include <QWindow>

namespace platform {

namespace {

/// The free area when no display tells its own.
constexpr Rect someDisplay { 0, 0, 1440, 900 };

/// The toolkit waits a while, in milliseconds, before it tells that the keyboard has gone.
constexpr qint64 slowestNews = 500;

class QtPopover final : public Popover {
public:
    QtPopover(const Screens& screens, double cornerRadius)
        : screens_(screens)
        , window_(cornerRadius, [this] { performClose(); })
    {
    }

    QtPopover(const QtPopover&) = delete;
    QtPopover& operator=(const QtPopover&) = delete;
    ~QtPopover() override
    {
        QObject::disconnect(turnedTo_);
        QObject::disconnect(turnedAway_);
    }

    void setContentView(QWidget* view) override
    {
        if (view)
            size_ = view->size();
        window_.setContent(view);
    }

    void layoutContent() override
    {
        QWidget* const view = window_.content();
        if (!view)
            return;
        view->ensurePolished();
        if (QLayout* const layout = view->layout())
            layout->activate();
    }

    void setAnimates(bool animates) override { animates_ = animates; }
    void setTransient(bool transient) override { transient_ = transient; }

    void show(const Rect& rect, const AnchorView& view, Edge preferredEdge) override
    {
        const Rect anchor = view.onScreen(rect);
        const std::vector<Screen> displays = screens_.all();
        const auto display = displayOf(anchor, displays);
        const Rect frame = popoverFrame(
            anchor, QSizeF(size_), preferredEdge, display ? displays[*display].visible : someDisplay);
        window_.appear(toToolkit(frame, globalOrigin()).toRect(), animates_ && !shown_);
        if (!std::exchange(shown_, true)) {
            hadKeyboard_ = false;
            sinceShown_.start();
        }
        if (!turnedAway_ && !X11PressWatch::seesAll(toolkitXConnection()))
            followKeyboard();
    }

    [[nodiscard]] bool isShown() const override { return shown_; }

    void performClose() override { close(); }

    void close() override
    {
        if (!shown_)
            return;
        shown_ = false;
        window_.vanish();
        // A copy: the callback may destroy this, and itself with it.
        if (const auto didClose = didClose_)
            didClose();
    }

    void setOnDidClose(Job didClose) override { didClose_ = std::move(didClose); }

    void makeKey() override
    {
        if (shown_)
            takeKeyboard(window_);
    }

    [[nodiscard]] bool isKey() const override
    {
        if (!shown_)
            return false;
        return isOurs(QApplication::activeWindow()) || isOurs(QApplication::activePopupWidget());
    }

private:
    /// Whether it is the window, or a menu or a question of ours over it.
    [[nodiscard]] bool isOurs(const QWidget* one) const
    {
        return one
            && (one == &window_ || one == QApplication::activePopupWidget()
                || one == QApplication::activeModalWidget());
    }

    void followKeyboard()
    {
        turnedTo_ = QObject::connect(
            qApp, &QGuiApplication::focusWindowChanged, &window_, [this](const QWindow* focused) {
                hadKeyboard_ = hadKeyboard_ || (focused && focused == window_.windowHandle());
            });
        turnedAway_ = QObject::connect(qApp, &QGuiApplication::applicationStateChanged, &window_,
            [this](Qt::ApplicationState state) { closeWhenLeft(state); });
    }

    void closeWhenLeft(Qt::ApplicationState state)
    {
        // That of an earlier showing means nothing for one that has yet to get the keyboard.
        if (!hadKeyboard_ && !sinceShown_.hasExpired(slowestNews))
            return;
        const bool ours = QApplication::activePopupWidget() || QApplication::activeModalWidget();
        if (transient_ && shown_ && state == Qt::ApplicationInactive && !ours)
            performClose();
    }

    const Screens& screens_;
    PopoverWindow window_;
    QSize size_; ///< as the content came, which a low display may have to shrink
    Job didClose_;
    QMetaObject::Connection turnedTo_;
    QMetaObject::Connection turnedAway_;
    bool animates_ = false;
    bool transient_ = false;
    bool shown_ = false;
    bool hadKeyboard_ = false; ///< since it was shown
    QElapsedTimer sinceShown_;
};

} // namespace

QtPopovers::QtPopovers(const Screens& screens)
    : screens_(screens)
{
}

std::unique_ptr<Popover> QtPopovers::makePopover(double cornerRadius)
{
    return std::make_unique<QtPopover>(screens_, cornerRadius);
}

} // namespace platform
