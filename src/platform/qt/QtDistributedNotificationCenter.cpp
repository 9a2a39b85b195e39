// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtDistributedNotificationCenter.h"

#include <utility>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QMap>
#include <QString>
#include <QVariant>

namespace platform {

namespace {

constexpr const char* path = "/dev/quent/ostrel";
constexpr const char* interface = "dev.quent.ostrel.DistributedNotification";
constexpr const char* signature = "sa{sv}";

/// Longer than a bus on the same machine takes to answer, shorter than a person waits.
constexpr int flushMilliseconds = 1000;

UserInfo textsOf(const QVariantMap& information)
{
    UserInfo texts;
    for (auto entry = information.begin(); entry != information.end(); ++entry)
        if (entry.value().userType() == QMetaType::QString)
            texts.emplace(entry.key().toStdString(), entry.value().toString().toStdString());
    return texts;
}

} // namespace

/// One who wants to be told. The observation that the caller holds is all that keeps it.
struct QtDistributedNotificationCenter::Observer {
    QString name;
    std::function<void(const UserInfo&)> received;
};

QtDistributedNotificationCenter::QtDistributedNotificationCenter(MainQueue& queue)
    : queue_(queue)
{
}

void QtDistributedNotificationCenter::post(const std::string& name, const UserInfo& userInfo)
{
    // The bus library wants an application object, which a command-line route doesn't have.
    int count = 0;
    const auto own
        = QCoreApplication::instance() ? nullptr : std::make_unique<QCoreApplication>(count, nullptr);
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    QVariantMap information;
    for (const auto& [key, value] : userInfo)
        information.insert(QString::fromStdString(key), QString::fromStdString(value));
    QDBusMessage message = QDBusMessage::createSignal(path, interface, "Posted");
    message << QString::fromStdString(name) << information;
    if (!bus.send(message))
        return;
    // An answered call behind it means that the bus has read the signal too.
    const QDBusMessage ping = QDBusMessage::createMethodCall(
        "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId");
    bus.call(ping, QDBus::Block, flushMilliseconds);
}

std::unique_ptr<Observation> QtDistributedNotificationCenter::observe(
    const std::string& name, std::function<void(const UserInfo&)> received)
{
    struct Held final : Observation {
        std::shared_ptr<const Observer> observer;
    };
    auto held = std::make_unique<Held>();
    held->observer = std::make_shared<const Observer>(
        Observer { .name = QString::fromStdString(name), .received = std::move(received) });
    std::erase_if(observers_, [](const auto& observer) { return observer.expired(); });
    observers_.emplace_back(held->observer);
    // The bus itself keeps messages of other names away, so that they don't wake this process. A name that is
    // asked for twice is still delivered once.
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected())
        bus.connect({}, path, interface, "Posted", { held->observer->name }, signature, this,
            SLOT(posted(QDBusMessage)));
    return held;
}

void QtDistributedNotificationCenter::posted(const QDBusMessage& message)
{
    const QVariantList given = message.arguments();
    if (message.signature() != signature)
        return;
    const UserInfo texts = textsOf(qdbus_cast<QVariantMap>(given[1]));
    for (const auto& observer : observers_)
        if (const auto held = observer.lock(); held && held->name == given[0].toString())
            queue_.post([observer, texts] {
                if (const auto still = observer.lock())
                    still->received(texts);
            });
}

} // namespace platform
