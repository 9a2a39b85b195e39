// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QString>
#include <QVariantMap>

namespace platform {

/// An object on the bus that has one interface, with properties that can only be read. Whatever it doesn't
/// know is answered with the error that tells why. Main thread.
class BusObject : public QDBusVirtualObject {
public:
    explicit BusObject(const char* interface);

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) final;

protected:
    /// The answer to a call of the interface, as "Member(signature)"; nothing for one that it doesn't know.
    [[nodiscard]] virtual std::optional<QDBusMessage> answer(
        const QDBusMessage& message, const QString& call, const QDBusConnection& connection)
        = 0;
    /// All properties, of which the wanted one, or each for an empty name, is as it is now.
    [[nodiscard]] virtual QVariantMap properties(const QString& wanted);

private:
    [[nodiscard]] QDBusMessage propertiesAnswer(const QDBusMessage& message, const QString& call);
    [[nodiscard]] QDBusMessage refusal(const QDBusMessage& message, const QString& call) const;

    QString interface_;
};

} // namespace platform
