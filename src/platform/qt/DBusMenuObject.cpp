// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/DBusMenuObject.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>

#include <utility>

namespace platform {

namespace {

QDBusMessage unknownRow(const QDBusMessage& message, int id)
{
    return message.createErrorReply(
        "com.canonical.dbusmenu.Error.UnknownId", QString("The menu has no row %1.").arg(id));
}

} // namespace

DBusMenuObject::DBusMenuObject(MainQueue& queue, QString path)
    : BusObject(interface)
    , queue_(queue)
    , path_(std::move(path))
{
}

void DBusMenuObject::setBuilder(std::function<Menu()> build)
{
    build_ = std::move(build);
    rebuild(nullptr);
}

bool DBusMenuObject::rebuild(const QDBusConnection* connection)
{
    if (!build_)
        return false;
    const DBusMenuModel::Change change = model_.update(build_());
    if (connection && change.layout) {
        QDBusMessage signal = QDBusMessage::createSignal(path_, interface, "LayoutUpdated");
        signal << model_.revision() << DBusMenuModel::root;
        connection->send(signal);
    } else if (connection && !change.properties.isEmpty()) {
        QDBusMessage signal = QDBusMessage::createSignal(path_, interface, "ItemsPropertiesUpdated");
        signal << QVariant::fromValue(change.properties) << QVariant::fromValue(BusMenuRemovedList());
        connection->send(signal);
    }
    return change.layout || !change.properties.isEmpty();
}

void DBusMenuObject::happened(int id, const QString& event)
{
    if (event != "clicked")
        return;
    if (Job action = model_.action(id))
        queue_.post(std::move(action));
}

QVariantMap DBusMenuObject::properties(const QString&)
{
    return { { "Version", 3U }, { "TextDirection", "ltr" }, { "Status", "normal" },
        { "IconThemePath", QStringList() } };
}

std::optional<QDBusMessage> DBusMenuObject::answer(
    const QDBusMessage& message, const QString& call, const QDBusConnection& connection)
{
    const QVariantList given = message.arguments();
    if (call == "GetLayout(iias)") {
        const int id = given[0].toInt();
        if (!model_.has(id))
            return unknownRow(message, id);
        const BusMenuLayout layout = model_.layout(id, given[1].toInt(), given[2].toStringList());
        return message.createReply({ model_.revision(), QVariant::fromValue(layout) });
    }
    if (call == "GetGroupProperties(aias)") {
        BusMenuPropertiesList rows;
        for (const int id : qdbus_cast<QList<int>>(given[0]))
            if (model_.has(id))
                rows.push_back({ id, model_.properties(id, given[1].toStringList()) });
        return message.createReply(QVariant::fromValue(rows));
    }
    if (call == "GetProperty(is)") {
        const int id = given[0].toInt();
        const QString name = given[1].toString();
        const QVariantMap found = model_.properties(id, { name });
        if (!model_.has(id))
            return unknownRow(message, id);
        if (found.isEmpty())
            return message.createErrorReply(QDBusError::InvalidArgs, "The row has no property " + name + ".");
        return message.createReply(QVariant::fromValue(QDBusVariant(found.value(name))));
    }
    if (call == "Event(isvu)") {
        const int id = given[0].toInt();
        if (!model_.has(id))
            return unknownRow(message, id);
        happened(id, given[1].toString());
        return message.createReply();
    }
    if (call == "EventGroup(a(isvu))") {
        QList<int> unknown;
        const auto events = qdbus_cast<BusMenuEvents>(given[0]);
        for (const BusMenuEvent& event : events) {
            if (model_.has(event.id))
                happened(event.id, event.name);
            else
                unknown.push_back(event.id);
        }
        if (!events.isEmpty() && unknown.size() == events.size())
            return unknownRow(message, unknown.front());
        return message.createReply(QVariant::fromValue(unknown));
    }
    if (call == "AboutToShow(i)") {
        const int id = given[0].toInt();
        if (!model_.has(id))
            return unknownRow(message, id);
        return message.createReply(id == DBusMenuModel::root && rebuild(&connection));
    }
    if (call == "AboutToShowGroup(ai)") {
        QList<int> changed;
        QList<int> unknown;
        for (const int id : qdbus_cast<QList<int>>(given[0])) {
            if (!model_.has(id))
                unknown.push_back(id);
            else if (id == DBusMenuModel::root && rebuild(&connection))
                changed.push_back(id);
        }
        return message.createReply({ QVariant::fromValue(changed), QVariant::fromValue(unknown) });
    }
    return std::nullopt;
}

QString DBusMenuObject::introspect(const QString&) const
{
    return R"xml(<interface name="com.canonical.dbusmenu">
  <property name="Version" type="u" access="read"/>
  <property name="TextDirection" type="s" access="read"/>
  <property name="Status" type="s" access="read"/>
  <property name="IconThemePath" type="as" access="read"/>
  <method name="GetLayout">
    <arg name="parentId" type="i" direction="in"/>
    <arg name="recursionDepth" type="i" direction="in"/>
    <arg name="propertyNames" type="as" direction="in"/>
    <arg name="revision" type="u" direction="out"/>
    <arg name="layout" type="(ia{sv}av)" direction="out"/>
  </method>
  <method name="GetGroupProperties">
    <arg name="ids" type="ai" direction="in"/>
    <arg name="propertyNames" type="as" direction="in"/>
    <arg name="properties" type="a(ia{sv})" direction="out"/>
  </method>
  <method name="GetProperty">
    <arg name="id" type="i" direction="in"/>
    <arg name="name" type="s" direction="in"/>
    <arg name="value" type="v" direction="out"/>
  </method>
  <method name="Event">
    <arg name="id" type="i" direction="in"/>
    <arg name="eventId" type="s" direction="in"/>
    <arg name="data" type="v" direction="in"/>
    <arg name="timestamp" type="u" direction="in"/>
  </method>
  <method name="EventGroup">
    <arg name="events" type="a(isvu)" direction="in"/>
    <arg name="idErrors" type="ai" direction="out"/>
  </method>
  <method name="AboutToShow">
    <arg name="id" type="i" direction="in"/>
    <arg name="needUpdate" type="b" direction="out"/>
  </method>
  <method name="AboutToShowGroup">
    <arg name="ids" type="ai" direction="in"/>
    <arg name="updatesNeeded" type="ai" direction="out"/>
    <arg name="idErrors" type="ai" direction="out"/>
  </method>
  <signal name="ItemsPropertiesUpdated">
    <arg name="updatedProps" type="a(ia{sv})"/>
    <arg name="removedProps" type="a(ias)"/>
  </signal>
  <signal name="LayoutUpdated">
    <arg name="revision" type="u"/>
    <arg name="parent" type="i"/>
  </signal>
  <signal name="ItemActivationRequested">
    <arg name="id" type="i"/>
    <arg name="timestamp" type="u"/>
  </signal>
</interface>
)xml";
}

} // namespace platform
