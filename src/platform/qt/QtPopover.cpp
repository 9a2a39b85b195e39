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
#include <QLayout>

namespace platform {

namespace {

/// The free area when no display tells its own.
constexpr Rect someDisplay { 0, 0, 1440, 900 };

class QtPopover final : public Popover {
public:
    QtPopover(const Screens& screens, double cornerRadius)
        : screens_(screens)
        , window_(cornerRadius, [this] { performClose(); })
    {
    }

    QtPopover(const QtPopover&) = delete;
    QtPopover& operator=(const QtPopover&) = delete;
    ~QtPopover() override { QObject::disconnect(turnedAway_); }

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
        shown_ = true;
        if (!turnedAway_ && !X11PressWatch::seesAll(toolkitXConnection()))
            turnedAway_ = QObject::connect(qApp, &QGuiApplication::applicationStateChanged, &window_,
                [this](Qt::ApplicationState state) { closeWhenLeft(state); });
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

    void closeWhenLeft(Qt::ApplicationState state)
    {
        const bool ours = QApplication::activePopupWidget() || QApplication::activeModalWidget();
        if (transient_ && shown_ && state == Qt::ApplicationInactive && !ours)
            performClose();
    }

    const Screens& screens_;
    PopoverWindow window_;
    QSize size_; ///< as the content came, which a low display may have to shrink
    Job didClose_;
    QMetaObject::Connection turnedAway_;
    bool animates_ = false;
    bool transient_ = false;
    bool shown_ = false;
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
