// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/BusProperties.h"

#include <QDBusError>
#include <QDBusVariant>

namespace platform {

QDBusMessage answerPropertiesCall(
    const QDBusMessage& message, const QString& interface, const QVariantMap& properties)
{
    const QString call = message.member() + "(" + message.signature() + ")";
    if (call != "Get(ss)" && call != "GetAll(s)")
        return message.createErrorReply(QDBusError::UnknownMethod, "The properties can't be changed.");
    const QString asked = message.arguments().constFirst().toString();
    if (!asked.isEmpty() && asked != interface)
        return message.createErrorReply(
            QDBusError::UnknownInterface, "There is no interface " + asked + " here.");
    if (call == "GetAll(s)")
        return message.createReply(properties);
    const QString name = message.arguments().constLast().toString();
    if (!properties.contains(name))
        return message.createErrorReply(QDBusError::UnknownProperty, "There is no property " + name + ".");
    return message.createReply(QVariant::fromValue(QDBusVariant(properties.value(name))));
}

} // namespace platform
