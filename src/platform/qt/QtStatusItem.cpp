// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtStatusItem.h"

#include "platform/qt/DBusMenuObject.h"
#include "platform/qt/GlobalPoints.h"
#include "platform/qt/ItemMenu.h"
#include "platform/qt/ItemPlacement.h"
#include "platform/qt/StatusNotifierLink.h"
#include "platform/qt/StatusNotifierObject.h"
#include "platform/qt/StatusNotifierTypes.h"
#include "platform/qt/XEmbedTray.h"
#include "platform/qt/XcbEventFilter.h"

#include <QApplication>
#include <QCursor>
#include <QDBusConnection>
#include <QMenu>
#include <QPointer>
#include <QStyle>
#include <QTimer>
#include <QToolTip>

#include <utility>

namespace platform {

namespace {

class QtStatusItem final : public StatusItem {
public:
    QtStatusItem(MainQueue& queue, X11Struts& struts, const QString& id, const QString& title,
        const QString& iconFolder, QString service, std::function<void()> dressToolTip)
        : queue_(queue)
        , struts_(struts)
        , title_(title.toStdString())
        , bus_(QDBusConnection::sessionBus())
        , service_(std::move(service))
        , dressToolTip_(std::move(dressToolTip))
        , item_(bus_, id, title, iconFolder,
              [this](const StatusNotifierObject::Press& press) { hostPressed(press); })
        , menu_(queue, StatusNotifierObject::menuPath)
        , link_(bus_, service_, [this] { hostChanged(); })
    {
        registerStatusNotifierTypes();
        tipDelay_.setSingleShot(true);
        QObject::connect(&tipDelay_, &QTimer::timeout, &tipDelay_, [this] {
            dressToolTip_();
            QToolTip::showText(QCursor::pos(), QString::fromStdString(face_.toolTip));
        });
        if (toolkitXConnection())
            filter_.emplace([this](const xcb_generic_event_t& event) {
                if (tray_)
                    tray_->handle(event);
            });
    }

    QtStatusItem(const QtStatusItem&) = delete;
    QtStatusItem& operator=(const QtStatusItem&) = delete;

    ~QtStatusItem() override
    {
        delete shownMenu_;
        offer(false);
    }

    void setFace(const StatusItemFace& face) override
    {
        face_ = face;
        faced_ = true;
        // Told before it goes: some hosts look at the item's state and not at its name.
        item_.setFace(face);
        offer(face.visible);
        dock();
        if (tray_)
            tray_->show(face, scale());
    }

    void setMenuBuilder(std::function<Menu()> build) override
    {
        build_ = build;
        menu_.setBuilder(std::move(build));
    }

    void setPressHandler(std::function<void(const StatusItemPress&)> handler) override
    {
        pressed_ = std::move(handler);
    }

    void popUpMenu() override
    {
        if (!build_)
            return;
        if (shownMenu_)
            shownMenu_->close();
        shownMenu_ = makeMenu(build_(), queue_).release();
        // The menu ends on its own stack, so it goes in a turn of its own.
        QObject::connect(shownMenu_, &QMenu::aboutToHide, shownMenu_, &QObject::deleteLater);
        popUp(*shownMenu_, toToolkit(menuPlace(), globalOrigin()).toPoint());
    }

    [[nodiscard]] std::optional<StatusItemPlacement> placement() const override
    {
        if (tray_) {
            if (const auto docked = tray_->place())
                return StatusItemPlacement { fromPixels(displayPlaces(), docked->frame), docked->seen };
            return std::nullopt;
        }
        if (!link_.lists())
            return std::nullopt;
        return StatusItemPlacement { guess(), true };
    }

private:
    [[nodiscard]] Rect guess() const
    {
        const auto length = link_.showsLabels() ? std::optional(face_.length) : std::nullopt;
        return guessedFrame(displayPlaces(), struts_.layout(), lastPlace_, length);
    }

    [[nodiscard]] static double scale()
    {
        const auto displays = displayPlaces();
        return displays.empty() ? 1 : displays.front().ratio;
    }

    /// Puts the item on the bus or takes it off.
    void offer(bool wanted)
    {
        if (!bus_.isConnected() || std::exchange(offered_, wanted) == wanted)
            return;
        if (wanted) {
            bus_.registerVirtualObject(StatusNotifierObject::path, &item_);
            bus_.registerVirtualObject(StatusNotifierObject::menuPath, &menu_);
            bus_.registerService(service_);
        } else {
            bus_.unregisterObject(StatusNotifierObject::path);
            bus_.unregisterObject(StatusNotifierObject::menuPath);
            bus_.unregisterService(service_);
            lastPlace_.reset();
        }
        item_.setOffered(wanted);
        link_.setOffered(wanted);
    }

    /// Docks where nobody on the bus takes the item, and leaves the tray where somebody does.
    void dock()
    {
        xcb_connection_t* connection = toolkitXConnection();
        const bool wanted = faced_ && face_.visible && connection
            && link_.presence() == StatusNotifierLink::Presence::absent;
        if (wanted == (tray_ != nullptr))
            return;
        hovered(false);
        tray_.reset();
        if (wanted)
            tray_ = std::make_unique<XEmbedTray>(connection, title_, face_, scale(),
                XEmbedTray::Owner { .pressed = [this](const TrayPress& press) { trayPressed(press); },
                    .hovered = [this](bool inside) { hovered(inside); } });
    }

    void hostChanged()
    {
        item_.setLabelled(link_.showsLabels());
        if (!link_.lists())
            lastPlace_.reset();
        dock();
    }

    void hostPressed(const StatusNotifierObject::Press& press)
    {
        StatusItemPress told { .place = std::nullopt, .secondary = press.secondary, .control = false };
        if (press.x != 0 || press.y != 0) {
            told.place = fromPixels(displayPlaces(), QPoint(press.x, press.y));
            lastPlace_ = told.place;
        }
        // The call doesn't carry the keys.
        told.control = QGuiApplication::queryKeyboardModifiers().testFlag(Qt::ControlModifier);
        post(told);
    }

    void trayPressed(const TrayPress& press)
    {
        post({ .place = fromPixels(displayPlaces(), QPoint(press.x, press.y)),
            .secondary = press.secondary,
            .control = press.control });
    }

    void post(const StatusItemPress& press)
    {
        queue_.post([this, press, alive = std::weak_ptr(alive_)] {
            if (alive.expired() || !pressed_)
                return;
            present_ = press.place;
            const auto handler = pressed_;
            handler(press);
            if (!alive.expired())
                present_.reset();
        });
    }

    void hovered(bool inside)
    {
        if (inside) {
            tipDelay_.start(QApplication::style()->styleHint(QStyle::SH_ToolTip_WakeUpDelay));
            return;
        }
        tipDelay_.stop();
        if (tray_)
            QToolTip::hideText();
    }

    /// Where a menu's upper left corner comes to lie.
    [[nodiscard]] Point menuPlace() const
    {
        if (present_)
            return *present_;
        const auto place = placement();
        const Rect frame = place ? place->frame : guess();
        const auto displays = displayPlaces();
        const DisplayPlace* display = displayAt(displays, { frame.x, frame.y });
        return menuCorner(frame, display ? display->frame : frame, shownMenu_->sizeHint().height());
    }

    MainQueue& queue_;
    X11Struts& struts_;
    std::string title_;
    QDBusConnection bus_;
    QString service_;
    std::function<void()> dressToolTip_;
    StatusItemFace face_;
    bool faced_ = false; ///< nothing is shown before the first face
    bool offered_ = false;
    std::function<Menu()> build_;
    std::function<void(const StatusItemPress&)> pressed_;
    std::optional<Point> lastPlace_; ///< of a press that a host told, for as long as that host has the item
    std::optional<Point> present_; ///< of the press whose handler runs now
    std::shared_ptr<int> alive_ = std::make_shared<int>();
    StatusNotifierObject item_;
    DBusMenuObject menu_;
    StatusNotifierLink link_;
    QTimer tipDelay_;
    std::unique_ptr<XEmbedTray> tray_;
    std::optional<XcbEventFilter> filter_;
    QPointer<QMenu> shownMenu_;
};

} // namespace

QtStatusBar::QtStatusBar(MainQueue& queue, X11Struts& struts, std::function<void()> dressToolTip)
    : queue_(queue)
    , struts_(struts)
    , dressToolTip_(std::move(dressToolTip))
{
}

std::unique_ptr<StatusItem> QtStatusBar::makeItem(
    const std::string& id, const std::string& title, const std::string& iconFolder)
{
    const QString service
        = QString("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid());
    return std::make_unique<QtStatusItem>(queue_, struts_, QString::fromStdString(id),
        QString::fromStdString(title), QString::fromStdString(iconFolder), service, dressToolTip_);
}

} // namespace platform
