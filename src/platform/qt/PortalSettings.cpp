// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/PortalSettings.h"

#include <utility>

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>

namespace platform {

namespace {

constexpr const char* service = "org.freedesktop.portal.Desktop";
constexpr const char* path = "/org/freedesktop/portal/desktop";
constexpr const char* interface = "org.freedesktop.portal.Settings";

/// The newer call gives the value, the older one a value in a value.
constexpr const char* newCall = "ReadOne";
constexpr const char* oldCall = "Read";

constexpr int limitMilliseconds = 1000;

QVariant unwrapped(QVariant value)
{
    while (value.userType() == qMetaTypeId<QDBusVariant>())
        value = qvariant_cast<QDBusVariant>(value).variant();
    return value;
}

} // namespace

PortalSettings::PortalSettings(const QDBusConnection& bus, std::vector<PortalKey> keys,
    std::function<void(std::size_t, const QVariant&)> told)
    : bus_(bus)
    , keys_(std::move(keys))
    , told_(std::move(told))
    , watcher_(service, bus, QDBusServiceWatcher::WatchForOwnerChange)
{
    if (!bus_.isConnected())
        return;
    connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString&, const QString&, const QString& owner) {
            owner_ = owner;
            if (!owner.isEmpty())
                askAll(Start::unwanted);
        });
    // The bus itself keeps the other keys' changes away, so that they don't wake this process. Whether it is
    // the portal that tells is seen to here: the library misses a portal that comes after this call.
    for (const PortalKey& key : keys_)
        bus_.connect({}, path, interface, "SettingChanged", { key.group, key.name }, "ssv", this,
            SLOT(settingChanged(QDBusMessage)));
    askAll(Start::wanted);
}

void PortalSettings::askAll(Start start)
{
    ++round_;
    for (std::size_t place = 0; place < keys_.size(); ++place)
        ask(place, newCall, start);
}

void PortalSettings::ask(std::size_t place, const char* member, Start start)
{
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface, member);
    call << keys_[place].group << keys_[place].name;
    call.setAutoStartService(start == Start::wanted);
    auto* pending = new QDBusPendingCallWatcher(bus_.asyncCall(call, limitMilliseconds), this);
    connect(
        pending, &QDBusPendingCallWatcher::finished, this, [this, pending, place, member, round = round_] {
            pending->deleteLater();
            if (round != round_)
                return;
            if (pending->isError() && member == newCall
                && pending->error().type() == QDBusError::UnknownMethod)
                return ask(place, oldCall, Start::unwanted);
            // The portal says so itself where it doesn't know the key; other errors are the bus's.
            if (const QString from = pending->reply().service(); from.startsWith(':'))
                owner_ = from;
            const QVariantList answer = pending->reply().arguments();
            told_(place, pending->isError() || answer.size() != 1 ? QVariant() : unwrapped(answer[0]));
        });
}

void PortalSettings::settingChanged(const QDBusMessage& message)
{
    if (message.service() != owner_)
        return;
    const QVariantList told = message.arguments();
    for (std::size_t place = 0; place < keys_.size(); ++place)
        if (told.value(0) == keys_[place].group && told.value(1) == keys_[place].name)
            told_(place, unwrapped(told.value(2)));
}

} // namespace platform
