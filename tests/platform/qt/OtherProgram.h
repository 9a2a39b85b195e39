// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/QtEnvironment.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>

/// Another program on the bus.
struct OtherProgram {
    /// The bus library holds back what reaches this program before its loop first turns, and delivers that
    /// behind what comes just then. A turn before there is anything keeps the order that tests rely on.
    OtherProgram()
    {
        static_cast<void>(QDBusConnection::sessionBus());
        QCoreApplication::processEvents();
    }
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;
    ~OtherProgram() { QDBusConnection::disconnectFromBus("other"); }

    /// Calls this program, whose objects live on this same thread.
    [[nodiscard]] QDBusMessage call(const QString& service, const char* path, const char* interface,
        const char* member, const QVariantList& arguments = {}) const
    {
        QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, member);
        message.setArguments(arguments);
        const QDBusPendingCall pending = bus.asyncCall(message);
        EXPECT_TRUE(spinUntil([&] { return pending.isFinished(); })) << member;
        return pending.reply();
    }

    void send(const char* path, const char* interface, const char* name, const QVariantList& arguments) const
    {
        QDBusMessage message = QDBusMessage::createSignal(path, interface, name);
        message.setArguments(arguments);
        bus.send(message);
    }

    QDBusConnection bus
        = QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), "other");
};
