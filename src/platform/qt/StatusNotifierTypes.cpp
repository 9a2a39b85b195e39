// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/StatusNotifierTypes.h"

#include <QDBusMetaType>
#include <QtEndian>

#include <cstdint>

namespace platform {

QDBusArgument& operator<<(QDBusArgument& to, const BusImage& image)
{
    to.beginStructure();
    to << image.width << image.height << image.pixels;
    to.endStructure();
    return to;
}

const QDBusArgument& operator>>(const QDBusArgument& from, BusImage& image)
{
    from.beginStructure();
    from >> image.width >> image.height >> image.pixels;
    from.endStructure();
    return from;
}

QDBusArgument& operator<<(QDBusArgument& to, const BusToolTip& tip)
{
    to.beginStructure();
    to << tip.iconName << tip.images << tip.title << tip.text;
    to.endStructure();
    return to;
}

const QDBusArgument& operator>>(const QDBusArgument& from, BusToolTip& tip)
{
    from.beginStructure();
    from >> tip.iconName >> tip.images >> tip.title >> tip.text;
    from.endStructure();
    return from;
}

QDBusArgument& operator<<(QDBusArgument& to, const BusMenuProperties& row)
{
    to.beginStructure();
    to << row.id << row.properties;
    to.endStructure();
    return to;
}

const QDBusArgument& operator>>(const QDBusArgument& from, BusMenuProperties& row)
{
    from.beginStructure();
    from >> row.id >> row.properties;
    from.endStructure();
    return from;
}

QDBusArgument& operator<<(QDBusArgument& to, const BusMenuLayout& row)
{
    to.beginStructure();
    to << row.id << row.properties;
    to.beginArray(QMetaType::fromType<QDBusVariant>());
    for (const BusMenuLayout& child : row.children)
        to << QDBusVariant(QVariant::fromValue(child));
    to.endArray();
    to.endStructure();
    return to;
}

const QDBusArgument& operator>>(const QDBusArgument& from, BusMenuLayout& row)
{
    from.beginStructure();
    from >> row.id >> row.properties;
    from.beginArray();
    while (!from.atEnd()) {
        QDBusVariant child;
        from >> child;
        row.children.push_back(qdbus_cast<BusMenuLayout>(child.variant()));
    }
    from.endArray();
    from.endStructure();
    return from;
}

QDBusArgument& operator<<(QDBusArgument& to, const BusMenuRemoved& row)
{
    to.beginStructure();
    to << row.id << row.properties;
    to.endStructure();
    return to;
}

const QDBusArgument& operator>>(const QDBusArgument& from, BusMenuRemoved& row)
{
    from.beginStructure();
    from >> row.id >> row.properties;
    from.endStructure();
    return from;
}

QDBusArgument& operator<<(QDBusArgument& to, const BusMenuEvent& event)
{
    to.beginStructure();
    to << event.id << event.name << event.data << event.timestamp;
    to.endStructure();
    return to;
}

const QDBusArgument& operator>>(const QDBusArgument& from, BusMenuEvent& event)
{
    from.beginStructure();
    from >> event.id >> event.name >> event.data >> event.timestamp;
    from.endStructure();
    return from;
}

void registerStatusNotifierTypes()
{
    qDBusRegisterMetaType<BusImage>();
    qDBusRegisterMetaType<BusImages>();
    qDBusRegisterMetaType<BusToolTip>();
    qDBusRegisterMetaType<BusMenuProperties>();
    qDBusRegisterMetaType<BusMenuPropertiesList>();
    qDBusRegisterMetaType<BusMenuLayout>();
    qDBusRegisterMetaType<BusMenuRemoved>();
    qDBusRegisterMetaType<BusMenuRemovedList>();
    qDBusRegisterMetaType<BusMenuEvent>();
    qDBusRegisterMetaType<BusMenuEvents>();
    qDBusRegisterMetaType<QList<int>>();
}

QVariantMap busDictionary(const QVariant& value)
{
    if (value.userType() != qMetaTypeId<QDBusArgument>())
        return value.toMap();
    const auto argument = qvariant_cast<QDBusArgument>(value);
    return argument.currentSignature() == "a{sv}" ? qdbus_cast<QVariantMap>(argument) : QVariantMap();
}

BusImage busImage(const Image& image)
{
    BusImage bus { .width = image.width, .height = image.height, .pixels = {} };
    bus.pixels.resize(static_cast<qsizetype>(image.pixels.size()) * qsizetype { sizeof(std::uint32_t) });
    char* next = bus.pixels.data();
    for (const std::uint32_t pixel : image.pixels) {
        qToBigEndian<quint32>(pixel, next);
        next += sizeof pixel;
    }
    return bus;
}

} // namespace platform
