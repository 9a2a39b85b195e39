// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDBusMessage>
#include <QString>
#include <QVariantMap>

namespace platform {

inline constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";

/// The answer to a call of org.freedesktop.DBus.Properties on an object whose properties can only be read.
[[nodiscard]] QDBusMessage answerPropertiesCall(
    const QDBusMessage& message, const QString& interface, const QVariantMap& properties);

} // namespace platform
