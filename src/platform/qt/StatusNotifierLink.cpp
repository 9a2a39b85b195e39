// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/StatusNotifierLink.h"

#include "platform/qt/LabelHosts.h"
#include "platform/qt/StatusNotifierTypes.h"

#include <algorithm>
#include <utility>

#include <QDBusPendingCallWatcher>
#include <QFile>

namespace platform {

namespace {

constexpr const char* watcherService = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";

QDBusMessage toWatcher(const char* interface, const char* member, const QVariantList& arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(watcherService, watcherPath, interface, member);
    message.setArguments(arguments);
    message.setAutoStartService(false);
    return message;
}

/// The kernel's short name of a process; empty when it has gone.
std::string programOf(uint pid)
{
    QFile file(QString("/proc/%1/comm").arg(pid));
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed().toStdString() : std::string();
}

} // namespace

StatusNotifierLink::StatusNotifierLink(
    const QDBusConnection& bus, QString service, std::function<void()> changed)
    : bus_(bus)
    , service_(std::move(service))
    , changed_(std::move(changed))
    , watcher_(watcherService, bus, QDBusServiceWatcher::WatchForOwnerChange)
{
    if (!bus_.isConnected()) {
        presence_ = Presence::absent;
        return;
    }
    connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this, [this] { look(); });
    bus_.connect({}, watcherPath, watcherService, {}, this, SLOT(watcherTold(QDBusMessage)));
    look();
}

void StatusNotifierLink::call(
    const QDBusMessage& message, const std::function<void(const QDBusMessage&)>& answered)
{
    auto* pending = new QDBusPendingCallWatcher(bus_.asyncCall(message), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [this, pending, answered, round = round_] {
        pending->deleteLater();
        if (round == round_)
            answered(pending->reply());
    });
}

void StatusNotifierLink::look()
{
    ++round_;
    lists_ = false;
    QDBusMessage question = QDBusMessage::createMethodCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
        "org.freedesktop.DBus", "GetConnectionUnixProcessID");
    question << watcherService;
    call(question, [this](const QDBusMessage& answer) {
        // A bus that can't tell the number still knows whether there is somebody.
        const bool nobody
            = answer.errorName() == "org.freedesktop.DBus.Error.NameHasNoOwner" || !bus_.isConnected();
        presence_ = nobody ? Presence::absent : Presence::present;
        showsLabels_ = !nobody && platform::showsLabels(programOf(answer.arguments().value(0).toUInt()));
        changed_();
        registerItem();
    });
}

void StatusNotifierLink::setOffered(bool offered)
{
    if (std::exchange(offered_, offered) == offered)
        return;
    lists_ = false;
    registerItem();
}

void StatusNotifierLink::registerItem()
{
    if (!offered_ || presence_ != Presence::present)
        return;
    call(toWatcher(watcherService, "RegisterStatusNotifierItem", { service_ }),
        [this](const QDBusMessage& answer) {
            if (answer.type() == QDBusMessage::ReplyMessage)
                askList();
        });
}

void StatusNotifierLink::watcherTold(const QDBusMessage&)
{
    if (offered_ && presence_ == Presence::present)
        askList();
}

void StatusNotifierLink::askList()
{
    call(toWatcher("org.freedesktop.DBus.Properties", "GetAll", { watcherService }),
        [this](const QDBusMessage& answer) {
            const auto all = busDictionary(answer.arguments().value(0));
            const QVariant listed = all.value("RegisteredStatusNotifierItems");
            // A watcher without the property took the item all the same.
            const QStringList items = listed.isValid() ? listed.toStringList() : QStringList { service_ };
            const QString own = bus_.baseService();
            takeLists(offered_ && all.value("IsStatusNotifierHostRegistered", true).toBool()
                && std::ranges::any_of(items, [&](const QString& item) {
                       const QString name = item.section('/', 0, 0);
                       return name == service_ || name == own;
                   }));
        });
}

void StatusNotifierLink::takeLists(bool lists)
{
    if (std::exchange(lists_, lists) != lists)
        changed_();
}

} // namespace platform
