// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/PortalShortcuts.h"

#include "platform/qt/PortalTrigger.h"
#include "platform/qt/StatusNotifierTypes.h"

#include <utility>

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QList>
#include <QMetaType>

namespace platform {

/// A shortcut on the bus, (sa{sv}).
struct BusShortcut {
    QString id;
    QVariantMap properties;
};

// The library looks for these beside the record.
static QDBusArgument& operator<<(QDBusArgument& argument, const BusShortcut& shortcut)
{
    argument.beginStructure();
    argument << shortcut.id << shortcut.properties;
    argument.endStructure();
    return argument;
}

static const QDBusArgument& operator>>(const QDBusArgument& argument, BusShortcut& shortcut)
{
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.properties;
    argument.endStructure();
    return argument;
}

namespace {

constexpr const char* service = "org.freedesktop.portal.Desktop";
constexpr const char* path = "/org/freedesktop/portal/desktop";
constexpr const char* interface = "org.freedesktop.portal.GlobalShortcuts";
constexpr const char* requestInterface = "org.freedesktop.portal.Request";
constexpr const char* sessionInterface = "org.freedesktop.portal.Session";

constexpr const char* programId = "dev.quent.ostrel";
constexpr const char* shortcutId = "toggle-panel";
constexpr const char* description = "Open or close the OSTREL panel";

/// For the portal's first word on a call; the user may take any time.
constexpr int limitMilliseconds = 1000;

QDBusMessage portalCall(const char* interfaceName, const char* member)
{
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, interfaceName, member);
    call.setAutoStartService(false);
    return call;
}

} // namespace

PortalShortcuts::PortalShortcuts(const QDBusConnection& bus, Told told)
    : bus_(bus)
    , told_(std::move(told))
    , watcher_(service, bus, QDBusServiceWatcher::WatchForOwnerChange)
{
    qDBusRegisterMetaType<BusShortcut>();
    qDBusRegisterMetaType<QList<BusShortcut>>();
    connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString&, const QString&, const QString& owner) { ownerChanged(owner); });
    // Whether it is the portal that tells is seen to by its own name.
    bus_.connect({}, path, interface, "Activated", this, SLOT(activated(QDBusMessage)));
    bus_.connect({}, path, interface, "ShortcutsChanged", this, SLOT(shortcutsChanged(QDBusMessage)));
}

void PortalShortcuts::ownerChanged(const QString& owner)
{
    owner_ = owner;
    forgetRequest();
    session_.clear();
    ++round_;
    if (!wish_)
        return;
    if (owner.isEmpty())
        fail(HotKeyRefusal::unavailable);
    else
        lookForPortal();
}

void PortalShortcuts::bind(const HotKey& hotKey)
{
    unbind();
    wish_ = hotKey;
    lookForPortal();
}

void PortalShortcuts::unbind()
{
    wish_.reset();
    ++round_;
    forgetRequest();
    endSession();
}

void PortalShortcuts::lookForPortal()
{
    told_.stands({ HotKeyStanding::Kind::asked, {} });
    // Portals of older or other desktops don't have this one.
    QDBusMessage register_
        = QDBusMessage::createMethodCall(service, path, "org.freedesktop.host.portal.Registry", "Register");
    bus_.asyncCall(register_ << programId << QVariantMap(), limitMilliseconds);
    QDBusMessage ask
        = QDBusMessage::createMethodCall(service, path, "org.freedesktop.DBus.Properties", "Get");
    auto* pending
        = new QDBusPendingCallWatcher(bus_.asyncCall(ask << interface << "version", limitMilliseconds), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [this, pending, round = round_] {
        pending->deleteLater();
        if (round != round_)
            return;
        if (pending->isError())
            return fail(HotKeyRefusal::unavailable);
        owner_ = pending->reply().service();
        createSession();
    });
}

void PortalShortcuts::createSession()
{
    const QString token = QStringLiteral("ostrel_session_%1").arg(++count_);
    request("CreateSession", {}, { { "session_handle_token", token } }, &PortalShortcuts::bindShortcut);
}

void PortalShortcuts::bindShortcut(const QVariantMap& results)
{
    // Written as a text, though it is an object's path.
    const QVariant handle = results.value("session_handle");
    session_ = handle.userType() == qMetaTypeId<QDBusObjectPath>()
        ? qvariant_cast<QDBusObjectPath>(handle).path()
        : handle.toString();
    if (!session_.startsWith('/') || !wish_) {
        session_.clear();
        return fail(HotKeyRefusal::declined);
    }
    bus_.connect({}, session_, sessionInterface, "Closed", this, SLOT(sessionClosed(QDBusMessage)));
    const QList<BusShortcut> shortcuts { { shortcutId,
        { { "description", description },
            { "preferred_trigger", QString::fromStdString(portalTrigger(*wish_)) } } } };
    request("BindShortcuts",
        { QVariant::fromValue(QDBusObjectPath(session_)), QVariant::fromValue(shortcuts), QString() }, {},
        &PortalShortcuts::bound);
}

void PortalShortcuts::bound(const QVariantMap& results) { tellBound(results.value("shortcuts")); }

void PortalShortcuts::request(
    const char* member, QVariantList arguments, QVariantMap options, Answered answered)
{
    const QString token = QStringLiteral("ostrel_%1").arg(++count_);
    const QString us = bus_.baseService().mid(1).replace('.', '_');
    // The answer may come before the call's own.
    forgetRequest();
    request_ = QStringLiteral("%1/request/%2/%3").arg(path, us, token);
    answered_ = answered;
    bus_.connect({}, request_, requestInterface, "Response", this, SLOT(responded(QDBusMessage)));
    options.insert("handle_token", token);
    arguments << options;
    QDBusMessage call = portalCall(interface, member);
    call.setArguments(arguments);
    auto* pending = new QDBusPendingCallWatcher(bus_.asyncCall(call, limitMilliseconds), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [this, pending, round = round_] {
        pending->deleteLater();
        if (round == round_ && pending->isError())
            fail(HotKeyRefusal::unavailable);
    });
}

void PortalShortcuts::forgetRequest()
{
    if (!request_.isEmpty())
        bus_.disconnect({}, request_, requestInterface, "Response", this, SLOT(responded(QDBusMessage)));
    request_.clear();
    answered_ = nullptr;
}

void PortalShortcuts::responded(const QDBusMessage& message)
{
    if (message.service() != owner_ || message.path() != request_ || !answered_)
        return;
    const Answered answered = answered_;
    forgetRequest();
    const QVariantList told = message.arguments();
    constexpr unsigned yes = 0;
    if (told.size() != 2 || told[0].userType() != QMetaType::UInt || told[0].toUInt() != yes)
        return fail(HotKeyRefusal::declined);
    (this->*answered)(busDictionary(told[1]));
}

void PortalShortcuts::endSession()
{
    const QString session = std::exchange(session_, {});
    if (session.isEmpty())
        return;
    bus_.disconnect({}, session, sessionInterface, "Closed", this, SLOT(sessionClosed(QDBusMessage)));
    QDBusMessage close = QDBusMessage::createMethodCall(service, session, sessionInterface, "Close");
    close.setAutoStartService(false);
    bus_.asyncCall(close, limitMilliseconds);
}

void PortalShortcuts::fail(HotKeyRefusal refusal)
{
    ++round_;
    forgetRequest();
    endSession();
    told_.refused(refusal);
}

void PortalShortcuts::tellBound(const QVariant& shortcuts)
{
    if (shortcuts.userType() != qMetaTypeId<QDBusArgument>())
        return fail(HotKeyRefusal::declined);
    const auto argument = qvariant_cast<QDBusArgument>(shortcuts);
    if (argument.currentSignature() != "a(sa{sv})")
        return fail(HotKeyRefusal::declined);
    for (const BusShortcut& shortcut : qdbus_cast<QList<BusShortcut>>(argument))
        if (shortcut.id == shortcutId)
            return told_.stands({ HotKeyStanding::Kind::bound,
                shortcut.properties.value("trigger_description").toString().toStdString() });
    fail(HotKeyRefusal::declined);
}

void PortalShortcuts::activated(const QDBusMessage& message)
{
    const QVariantList told = message.arguments();
    if (message.service() == owner_ && !session_.isEmpty()
        && qvariant_cast<QDBusObjectPath>(told.value(0)).path() == session_
        && told.value(1).toString() == shortcutId)
        told_.pressed();
}

void PortalShortcuts::shortcutsChanged(const QDBusMessage& message)
{
    const QVariantList told = message.arguments();
    if (message.service() == owner_ && !session_.isEmpty()
        && qvariant_cast<QDBusObjectPath>(told.value(0)).path() == session_)
        tellBound(told.value(1));
}

void PortalShortcuts::sessionClosed(const QDBusMessage& message)
{
    if (message.service() == owner_ && message.path() == session_)
        fail(HotKeyRefusal::declined);
}

} // namespace platform
