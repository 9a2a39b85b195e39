// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/BusObject.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusVariant>

namespace platform {

BusObject::BusObject(const char* interface)
    : interface_(interface)
{
}

bool BusObject::handleMessage(const QDBusMessage& message, const QDBusConnection& connection)
{
    const QString call = message.member() + "(" + message.signature() + ")";
    QDBusMessage reply;
    if (message.interface() == "org.freedesktop.DBus.Properties") {
        reply = propertiesAnswer(message, call);
    } else {
        if (!message.interface().isEmpty() && message.interface() != interface_)
            return false;
        const auto answered = answer(message, call, connection);
        reply = answered ? *answered : refusal(message, call);
    }
    if (message.isReplyRequired())
        connection.send(reply);
    return true;
}

QVariantMap BusObject::properties(const QString&) { return {}; }

QDBusMessage BusObject::propertiesAnswer(const QDBusMessage& message, const QString& call)
{
    if (call != "Get(ss)" && call != "GetAll(s)")
        return message.createErrorReply(QDBusError::UnknownMethod, "The properties can't be changed.");
    const QString asked = message.arguments().constFirst().toString();
    if (!asked.isEmpty() && asked != interface_)
        return message.createErrorReply(
            QDBusError::UnknownInterface, "There is no interface " + asked + " here.");
    if (call == "GetAll(s)")
        return message.createReply(properties({}));
    const QString name = message.arguments().constLast().toString();
    const QVariantMap all = properties(name);
    if (!all.contains(name))
        return message.createErrorReply(QDBusError::UnknownProperty, "There is no property " + name + ".");
    return message.createReply(QVariant::fromValue(QDBusVariant(all.value(name))));
}

QDBusMessage BusObject::refusal(const QDBusMessage& message, const QString& call) const
{
    return introspect({}).contains("<method name=\"" + message.member() + "\">")
        ? message.createErrorReply(QDBusError::InvalidArgs, "These aren't its arguments: " + call + ".")
        : message.createErrorReply(QDBusError::UnknownMethod, "There is no call " + call + " here.");
}

} // namespace platform
