// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/qt/StatusNotifierTypes.h"

#include "fuzz/FuzzTarget.h"
#include "support/QtEnvironment.h"

#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QStringList>
#include <QVariant>

#include <algorithm>
#include <memory>

/// Choices, numbers and texts made of an input's bytes; zeros and empty texts behind their end.
class FuzzBytes {
public:
    explicit FuzzBytes(std::string_view bytes = {})
        : left_(bytes)
    {
    }

    [[nodiscard]] bool empty() const { return left_.empty(); }

    std::uint8_t next()
    {
        const auto taken = take(1);
        return taken.empty() ? 0 : static_cast<std::uint8_t>(taken[0]);
    }

    /// Small in most cases, at the ends of the range in some.
    int number()
    {
        const int first = next();
        if (first < 240)
            return first - 8;
        int value = first;
        for (int n = 0; n < 4; ++n)
            value = static_cast<int>(static_cast<unsigned>(value) << 8U | next());
        return value;
    }

    QString text()
    {
        const auto taken = take(next());
        return QString::fromUtf8(taken.data(), static_cast<qsizetype>(taken.size()));
    }

    QList<int> numbers(int most)
    {
        QList<int> all;
        for (int count = next() % most; count > 0; --count)
            all.push_back(number());
        return all;
    }

private:
    std::string_view take(std::size_t count)
    {
        const auto taken = left_.substr(0, count);
        left_.remove_prefix(taken.size());
        return taken;
    }

    std::string_view left_;
};

/// A value of the bus of any type, nested a few levels at most.
inline QVariant anyValue(FuzzBytes& bytes, int depth = 3);

/// A dictionary with up to three entries of any kind; `known` are likely keys.
inline QVariantMap anyMap(FuzzBytes& bytes, int depth, const QStringList& known = {})
{
    QVariantMap map;
    for (int entries = bytes.next() % 4; entries > 0; --entries) {
        const int choice = bytes.next() % 8;
        const QString key = choice < known.size() ? known[choice] : bytes.text();
        map.insert(key, anyValue(bytes, depth - 1));
    }
    return map;
}

/// Of a menu's rows.
inline platform::BusMenuEvents anyEvents(FuzzBytes& bytes, int most, int depth)
{
    platform::BusMenuEvents events;
    for (int count = bytes.next() % most; count > 0; --count)
        events.push_back({ bytes.number(), bytes.next() % 2 == 0 ? QString("clicked") : bytes.text(),
            QDBusVariant(anyValue(bytes, depth)), 0 });
    return events;
}

inline QVariant anyValue(FuzzBytes& bytes, int depth)
{
    switch (bytes.next() % (depth > 0 ? 16 : 8)) {
    case 0:
        return bytes.number();
    case 1:
        return static_cast<uint>(bytes.number());
    case 2:
        return bytes.text();
    case 3:
        return bytes.next() % 2 == 1;
    case 4:
        return bytes.number() / 8.0;
    case 5:
        return bytes.text().toUtf8();
    case 6:
        return QVariant::fromValue(QDBusObjectPath("/" + QString(bytes.next() % 4, 'a')));
    case 7:
        return static_cast<qulonglong>(bytes.number());
    case 8:
        return QStringList(bytes.next() % 4, bytes.text());
    case 9:
        return QVariant::fromValue(bytes.numbers(8));
    case 10:
        return anyMap(bytes, depth);
    case 11:
        return QVariant::fromValue(QDBusVariant(anyValue(bytes, depth - 1)));
    case 12:
        return QVariantList { anyValue(bytes, depth - 1), anyValue(bytes, depth - 1) };
    case 13:
        return QVariant::fromValue(anyEvents(bytes, 5, depth - 1));
    case 14:
        return QVariant::fromValue(platform::BusMenuRemovedList { { bytes.number(), { bytes.text() } } });
    default:
        return QVariant::fromValue(
            platform::BusMenuPropertiesList { { bytes.number(), anyMap(bytes, depth - 1) } });
    }
}

/// The toolkit on a bus of its own, made at the first call and taken down with the process.
inline void needBus()
{
    static QtEnvironment* environment = nullptr;
    if (environment)
        return;
    environment = new QtEnvironment;
    environment->SetUp();
    platform::registerStatusNotifierTypes();
    // Before the toolkit's own statics go, which were made by now.
    std::atexit([] { environment->TearDown(); });
}

/// The one that stands beside the toolkit on its bus until the process ends.
template <typename Side>
Side& onBus()
{
    needBus();
    static std::unique_ptr<Side> side;
    if (!side) {
        side = std::make_unique<Side>();
        std::atexit([] { side.reset(); });
    }
    return *side;
}
