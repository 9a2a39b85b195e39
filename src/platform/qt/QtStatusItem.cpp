// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtStatusItem.h"

#include "platform/qt/DBusMenuObject.h"
#include "platform/qt/StatusNotifierObject.h"
#include "platform/qt/StatusNotifierTypes.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>

#include <utility>

namespace platform {

namespace {

constexpr const char* watcherService = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";

class QtStatusItem final : public StatusItem {
public:
    QtStatusItem(MainQueue& queue, const QString& id, const QString& title, QString service)
        : bus_(QDBusConnection::sessionBus())
        , service_(std::move(service))
        , item_(queue, bus_, id, title)
        , menu_(queue, StatusNotifierObject::menuPath)
        , watcher_(watcherService, bus_, QDBusServiceWatcher::WatchForOwnerChange)
    {
        if (!bus_.isConnected())
            return;
        registerStatusNotifierTypes();
        bus_.registerVirtualObject(StatusNotifierObject::path, &item_);
        bus_.registerVirtualObject(StatusNotifierObject::menuPath, &menu_);
        bus_.registerService(service_);
        QObject::connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, &watcher_,
            [this](const QString&, const QString&, const QString& owner) {
                registered_ = false;
                if (!owner.isEmpty())
                    registerWithWatcher();
            });
        registerWithWatcher();
    }

    QtStatusItem(const QtStatusItem&) = delete;
    QtStatusItem& operator=(const QtStatusItem&) = delete;

    ~QtStatusItem() override
    {
        bus_.unregisterObject(StatusNotifierObject::path);
        bus_.unregisterObject(StatusNotifierObject::menuPath);
        bus_.unregisterService(service_);
    }

    void setFace(const StatusItemFace& face) override { item_.setFace(face); }
    void setMenuBuilder(std::function<Menu()> build) override { menu_.setBuilder(std::move(build)); }
    void setPressHandler(std::function<void(const StatusItemPress&)> handler) override
    {
        item_.setPressHandler(std::move(handler));
    }
    void popUpMenu() override { }
    [[nodiscard]] std::optional<StatusItemPlacement> placement() const override
    {
        if (!registered_)
            return std::nullopt;
        return StatusItemPlacement { .frame = {}, .seen = true };
    }

private:
    void registerWithWatcher()
    {
        QDBusMessage call = QDBusMessage::createMethodCall(
            watcherService, watcherPath, watcherService, "RegisterStatusNotifierItem");
        call << service_;
        call.setAutoStartService(false);
        auto* pending = new QDBusPendingCallWatcher(bus_.asyncCall(call), &watcher_);
        QObject::connect(pending, &QDBusPendingCallWatcher::finished, &watcher_, [this, pending] {
            registered_ = !pending->isError();
            pending->deleteLater();
        });
    }

    QDBusConnection bus_;
    QString service_;
    StatusNotifierObject item_;
    DBusMenuObject menu_;
    QDBusServiceWatcher watcher_;
    bool registered_ = false;
};

} // namespace

QtStatusBar::QtStatusBar(MainQueue& queue)
    : queue_(queue)
{
}

std::unique_ptr<StatusItem> QtStatusBar::makeItem(
    const std::string& id, const std::string& title, const std::string&)
{
    const QString service
        = QString("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid());
    return std::make_unique<QtStatusItem>(
        queue_, QString::fromStdString(id), QString::fromStdString(title), service);
}

} // namespace platform
