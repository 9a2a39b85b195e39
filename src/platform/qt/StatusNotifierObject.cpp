// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/StatusNotifierObject.h"

#include "platform/qt/BusProperties.h"
#include "platform/qt/DBusMenuObject.h"
#include "platform/qt/StatusNotifierTypes.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QGuiApplication>
#include <QScreen>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace platform {

namespace {

/// The sizes that tray hosts draw at. Each is drawn for itself: a scaled one is blurred on dense screens.
constexpr std::array iconSizes { 16, 22, 24, 32, 44, 48, 64 };

/// Bars come dark and light: this grey stands at least 3 to 1 against both.
constexpr std::uint32_t neutralInk = 0x858a90;

BusImages busImages(const StatusItemPicture* picture)
{
    BusImages list;
    if (picture)
        for (const int size : iconSizes)
            list.push_back(busImage(picture->draw(size, size, neutralInk)));
    return list;
}

std::string keyOf(const std::shared_ptr<const StatusItemPicture>& picture)
{
    return picture ? picture->key() : std::string();
}

} // namespace

Point globalPoint(int x, int y)
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen)
        return {};
    const double ratio = screen->devicePixelRatio();
    return { x / ratio, screen->geometry().height() - y / ratio };
}

StatusNotifierObject::StatusNotifierObject(
    MainQueue& queue, QDBusConnection bus, const QString& id, const QString& title)
    : queue_(queue)
    , bus_(std::move(bus))
    , properties_ { { "Category", "SystemServices" }, { "Id", id }, { "Title", title }, { "WindowId", 0 },
        { "IconName", "" }, { "IconThemePath", "" }, { "IconPixmap", QVariant::fromValue(BusImages()) },
        { "OverlayIconName", "" }, { "OverlayIconPixmap", QVariant::fromValue(BusImages()) },
        { "AttentionIconName", "" }, { "AttentionIconPixmap", QVariant::fromValue(BusImages()) },
        { "AttentionMovieName", "" }, { "ItemIsMenu", false },
        { "Menu", QVariant::fromValue(QDBusObjectPath(menuPath)) }, { "XAyatanaOrderingIndex", 0U } }
{
    describeFace({});
}

void StatusNotifierObject::tell(const char* signal, const QVariantList& arguments) const
{
    QDBusMessage message = QDBusMessage::createSignal(path, interface, signal);
    message.setArguments(arguments);
    bus_.send(message);
}

void StatusNotifierObject::setFace(const StatusItemFace& face)
{
    const StatusItemFace before = std::exchange(face_, face);
    describeFace(before);
    if (keyOf(before.picture) != keyOf(face_.picture))
        tell("NewIcon");
    if (before.toolTip != face_.toolTip)
        tell("NewToolTip");
    if (before.visible != face_.visible)
        tell("NewStatus", { properties_["Status"] });
    if (before.label != face_.label || before.labelGuide != face_.labelGuide)
        tell("XAyatanaNewLabel", { properties_["XAyatanaLabel"], properties_["XAyatanaLabelGuide"] });
}

void StatusNotifierObject::describeFace(const StatusItemFace& before)
{
    properties_["Status"] = face_.visible ? "Active" : "Passive";
    properties_["ToolTip"] = QVariant::fromValue(BusToolTip {
        .iconName = {}, .images = {}, .title = QString::fromStdString(face_.toolTip), .text = {} });
    properties_["XAyatanaLabel"] = QString::fromStdString(face_.label);
    properties_["XAyatanaLabelGuide"] = QString::fromStdString(face_.labelGuide);
    if (keyOf(before.picture) != keyOf(face_.picture))
        properties_["IconPixmap"] = QVariant::fromValue(busImages(face_.picture.get()));
}

void StatusNotifierObject::setPressHandler(std::function<void(const StatusItemPress&)> handler)
{
    pressed_ = std::move(handler);
}

bool StatusNotifierObject::handleMessage(const QDBusMessage& message, const QDBusConnection& connection)
{
    if (message.interface() == propertiesInterface) {
        connection.send(answerPropertiesCall(message, interface, properties_));
        return true;
    }
    if (!message.interface().isEmpty() && message.interface() != interface)
        return false;
    const QString call = message.member() + "(" + message.signature() + ")";
    if (call == "Activate(ii)") {
        const QVariantList given = message.arguments();
        const Point place = globalPoint(given[0].toInt(), given[1].toInt());
        if (pressed_)
            queue_.post([handler = pressed_, place] { handler({ .place = place }); });
    } else if (call == "SecondaryActivate(ii)") {
        if (pressed_)
            queue_.post([handler = pressed_] { handler({}); });
    } else if (call != "ContextMenu(ii)" && call != "Scroll(is)" && call != "XAyatanaSecondaryActivate(u)") {
        connection.send(message.createErrorReply(
            QDBusError::UnknownMethod, "The item doesn't know the call " + call + "."));
        return true;
    }
    if (message.isReplyRequired())
        connection.send(message.createReply());
    return true;
}

QString StatusNotifierObject::introspect(const QString&) const
{
    return R"xml(<interface name="org.kde.StatusNotifierItem">
  <property name="Category" type="s" access="read"/>
  <property name="Id" type="s" access="read"/>
  <property name="Title" type="s" access="read"/>
  <property name="Status" type="s" access="read"/>
  <property name="WindowId" type="i" access="read"/>
  <property name="IconName" type="s" access="read"/>
  <property name="IconThemePath" type="s" access="read"/>
  <property name="IconPixmap" type="a(iiay)" access="read"/>
  <property name="OverlayIconName" type="s" access="read"/>
  <property name="OverlayIconPixmap" type="a(iiay)" access="read"/>
  <property name="AttentionIconName" type="s" access="read"/>
  <property name="AttentionIconPixmap" type="a(iiay)" access="read"/>
  <property name="AttentionMovieName" type="s" access="read"/>
  <property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
  <property name="ItemIsMenu" type="b" access="read"/>
  <property name="Menu" type="o" access="read"/>
  <property name="XAyatanaLabel" type="s" access="read"/>
  <property name="XAyatanaLabelGuide" type="s" access="read"/>
  <property name="XAyatanaOrderingIndex" type="u" access="read"/>
  <method name="Activate">
    <arg name="x" type="i" direction="in"/>
    <arg name="y" type="i" direction="in"/>
  </method>
  <method name="SecondaryActivate">
    <arg name="x" type="i" direction="in"/>
    <arg name="y" type="i" direction="in"/>
  </method>
  <method name="XAyatanaSecondaryActivate">
    <arg name="timestamp" type="u" direction="in"/>
  </method>
  <method name="ContextMenu">
    <arg name="x" type="i" direction="in"/>
    <arg name="y" type="i" direction="in"/>
  </method>
  <method name="Scroll">
    <arg name="delta" type="i" direction="in"/>
    <arg name="orientation" type="s" direction="in"/>
  </method>
  <signal name="NewTitle"/>
  <signal name="NewIcon"/>
  <signal name="NewAttentionIcon"/>
  <signal name="NewOverlayIcon"/>
  <signal name="NewToolTip"/>
  <signal name="NewStatus">
    <arg name="status" type="s"/>
  </signal>
  <signal name="XAyatanaNewLabel">
    <arg name="label" type="s"/>
    <arg name="guide" type="s"/>
  </signal>
</interface>
)xml";
}

} // namespace platform
