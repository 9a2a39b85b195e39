// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Image.h"

#include <QByteArray>
#include <QDBusArgument>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QVariantMap>

namespace platform {

/// A picture on the bus, (iiay): pixels as ARGB in network byte order.
struct BusImage {
    int width = 0;
    int height = 0;
    QByteArray pixels;
};
using BusImages = QList<BusImage>;

/// A tooltip on the bus, (sa(iiay)ss).
struct BusToolTip {
    QString iconName;
    BusImages images;
    QString title;
    QString text;
};

/// A menu row with its properties, (ia{sv}).
struct BusMenuProperties {
    int id = 0;
    QVariantMap properties;
};
using BusMenuPropertiesList = QList<BusMenuProperties>;

/// A menu row with those below it, (ia{sv}av).
struct BusMenuLayout {
    int id = 0;
    QVariantMap properties;
    QList<BusMenuLayout> children;
};

/// Rows that lost properties, (ias).
struct BusMenuRemoved {
    int id = 0;
    QStringList properties;
};
using BusMenuRemovedList = QList<BusMenuRemoved>;

/// One thing that happened to a row, (isvu).
struct BusMenuEvent {
    int id = 0;
    QString name;
    QDBusVariant data;
    uint timestamp = 0;
};
using BusMenuEvents = QList<BusMenuEvent>;

QDBusArgument& operator<<(QDBusArgument& to, const BusImage& image);
const QDBusArgument& operator>>(const QDBusArgument& from, BusImage& image);
QDBusArgument& operator<<(QDBusArgument& to, const BusToolTip& tip);
const QDBusArgument& operator>>(const QDBusArgument& from, BusToolTip& tip);
QDBusArgument& operator<<(QDBusArgument& to, const BusMenuProperties& row);
const QDBusArgument& operator>>(const QDBusArgument& from, BusMenuProperties& row);
QDBusArgument& operator<<(QDBusArgument& to, const BusMenuLayout& row);
const QDBusArgument& operator>>(const QDBusArgument& from, BusMenuLayout& row);
QDBusArgument& operator<<(QDBusArgument& to, const BusMenuRemoved& row);
const QDBusArgument& operator>>(const QDBusArgument& from, BusMenuRemoved& row);
QDBusArgument& operator<<(QDBusArgument& to, const BusMenuEvent& event);
const QDBusArgument& operator>>(const QDBusArgument& from, BusMenuEvent& event);

/// Tells the bus library about the types; harmless when repeated.
void registerStatusNotifierTypes();

/// A dictionary of texts and values as a message holds it; empty for anything else, over which the bus
/// library would fall.
[[nodiscard]] QVariantMap busDictionary(const QVariant& value);

[[nodiscard]] BusImage busImage(const Image& image);

} // namespace platform

Q_DECLARE_METATYPE(platform::BusImage)
Q_DECLARE_METATYPE(platform::BusToolTip)
Q_DECLARE_METATYPE(platform::BusMenuProperties)
Q_DECLARE_METATYPE(platform::BusMenuLayout)
Q_DECLARE_METATYPE(platform::BusMenuRemoved)
Q_DECLARE_METATYPE(platform::BusMenuEvent)
