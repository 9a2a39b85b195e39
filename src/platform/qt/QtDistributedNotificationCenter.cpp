// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtDistributedNotificationCenter.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QMap>
#include <QString>
#include <QVariant>

#include <memory>

namespace platform {

namespace {

constexpr const char* path = "/dev/quent/ostrel";
constexpr const char* interface = "dev.quent.ostrel.DistributedNotification";

/// Longer than a bus on the same machine takes to answer, shorter than a person waits.
constexpr int flushMilliseconds = 1000;

} // namespace

void QtDistributedNotificationCenter::post(
    const std::string& name, const std::map<std::string, std::string>& userInfo)
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

} // namespace platform
