// SPDX-License-Identifier: Apache-2.0
/// A desktop whose portal and tray answer anything, in the right form or in any: it is heard out, and nothing
/// waits for it.
#include "platform/qt/PortalSettings.h"
#include "platform/qt/PortalShortcuts.h"
#include "platform/qt/StatusNotifierLink.h"

#include "fuzz/BusValues.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusVirtualObject>

#include <iterator>

namespace {

using namespace platform;

constexpr const char* portalService = "org.freedesktop.portal.Desktop";
constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
constexpr const char* shortcuts = "org.freedesktop.portal.GlobalShortcuts";
constexpr const char* settings = "org.freedesktop.portal.Settings";
constexpr const char* session = "/org/freedesktop/portal/desktop/session/a";
constexpr const char* watcherService = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";

/// Enough turns for a wish to be asked, answered, bound and told.
constexpr int turns = 8;
constexpr int mostSignals = 6;

/// The desktop's side.
class Desktop final : public QDBusVirtualObject {
public:
    Desktop()
        : bus(QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), "desktop"))
    {
        bus.registerVirtualObject("/", this, QDBusConnection::SubPath);
        bus.registerService(portalService);
        bus.registerService(watcherService);
    }
    ~Desktop() override { QDBusConnection::disconnectFromBus("desktop"); }

    [[nodiscard]] QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        const QString member = message.member();
        if (member == "Ping")
            return connection.send(message.createReply());
        const int choice = bytes.next();
        if (choice % 8 == 7)
            return connection.send(message.createErrorReply(
                choice < 128 ? "org.freedesktop.DBus.Error.UnknownMethod" : "org.example.Odd", "odd"));
        QVariantList answer;
        if (choice % 8 == 6)
            answer = { anyValue(bytes), anyValue(bytes) };
        else if (member == "GetAll")
            answer
                = { anyMap(bytes, 3, { "RegisteredStatusNotifierItems", "IsStatusNotifierHostRegistered" }) };
        else if (member.startsWith("Read") || member == "Get")
            answer = { QVariant::fromValue(QDBusVariant(anyValue(bytes))) };
        connection.send(message.createReply(answer));
        if (member == "CreateSession" || member == "BindShortcuts")
            respond(message);
        return true;
    }

    /// The signals that such a desktop sends, in the right form or in any.
    void tell()
    {
        struct Known {
            const char* path;
            const char* interface;
            const char* member;
        };
        static constexpr Known known[] { { portalPath, shortcuts, "Activated" },
            { portalPath, shortcuts, "ShortcutsChanged" },
            { session, "org.freedesktop.portal.Session", "Closed" },
            { portalPath, settings, "SettingChanged" },
            { watcherPath, watcherService, "StatusNotifierItemRegistered" } };
        const int choice = bytes.next();
        const auto& [path, interface, member] = known[static_cast<std::size_t>(choice) % std::size(known)];
        QDBusMessage signal = QDBusMessage::createSignal(path, interface, member);
        if (choice < 128 && QString(interface) == shortcuts)
            signal << QVariant::fromValue(QDBusObjectPath(session));
        else if (choice < 128 && QString(interface) == settings)
            signal << "group"
                   << "name" << QVariant::fromValue(QDBusVariant(anyValue(bytes)));
        for (int arguments = bytes.next() % 3; arguments > 0; --arguments)
            signal << anyValue(bytes);
        bus.send(signal);
    }

    QDBusConnection bus;
    FuzzBytes bytes;

private:
    /// The user has decided, or the portal has gone mad.
    void respond(const QDBusMessage& call)
    {
        const auto options = qdbus_cast<QVariantMap>(call.arguments().constLast());
        const QString sender = call.service().mid(1).replace('.', '_');
        QDBusMessage response = QDBusMessage::createSignal(
            QString("%1/request/%2/%3").arg(portalPath, sender, options.value("handle_token").toString()),
            "org.freedesktop.portal.Request", "Response");
        const int choice = bytes.next();
        if (choice % 4 != 3)
            response << static_cast<uint>(choice % 16 == 2 ? 1 : 0);
        QVariantMap results = anyMap(bytes, 3, { "shortcuts" });
        if (choice < 192)
            results.insert("session_handle", session);
        response << (choice % 8 == 6 ? anyValue(bytes) : QVariant(results));
        bus.send(response);
    }
};

/// Lets what is on its way between the two arrive.
void turn(const QDBusConnection& own, const Desktop& desktop)
{
    const QDBusPendingCall ping = own.asyncCall(
        QDBusMessage::createMethodCall(desktop.bus.baseService(), "/ping", "org.example.Ping", "Ping"));
    check(spinUntil([&ping] { return ping.isFinished(); }) && !ping.isError());
}

} // namespace

void runOn(std::string_view text)
{
    auto& desktop = onBus<Desktop>();
    desktop.bytes = FuzzBytes(text);
    const QDBusConnection own = QDBusConnection::sessionBus();
    int told = 0;
    PortalShortcuts portal(own,
        { .pressed = [&told] { ++told; },
            .stands
            = [&told](const HotKeyStanding& standing) { told += static_cast<int>(standing.name.size()); },
            .refused = [&told](HotKeyRefusal) { ++told; } });
    const PortalSettings appearance(own, { { "group", "name" } },
        [&told](std::size_t, const QVariant& value) { told += value.toInt() == 0 ? 0 : 1; });
    StatusNotifierLink link(own, "org.kde.StatusNotifierItem-1-1", [&told] { ++told; });
    link.setOffered(true);
    portal.bind({ 46, 1572864, "m" });
    for (int n = 0; n < turns; ++n)
        turn(own, desktop);
    for (int n = 0; n < mostSignals && !desktop.bytes.empty(); ++n)
        desktop.tell();
    turn(own, desktop);
    turn(own, desktop);
    portal.unbind();
}
