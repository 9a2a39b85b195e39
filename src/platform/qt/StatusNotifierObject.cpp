// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/StatusNotifierObject.h"

#include "platform/qt/DBusMenuObject.h"
#include "platform/qt/StatusNotifierTypes.h"
#include "platform/qt/TrayPaint.h"

#include <QDBusMessage>
#include <QDBusObjectPath>

#include <array>
#include <memory>
#include <span>
#include <utility>

namespace platform {

namespace {

/// The sizes that tray hosts draw at. Each is drawn for itself: a scaled one is blurred on dense screens.
constexpr std::array iconSizes { 16, 22, 24, 32, 44, 48, 64 };

/// Of an icon that also has a name, for a host that doesn't find it: every change of the tooltip makes hosts
/// fetch all there is, so its pixels go over the bus with each tick.
constexpr std::array fallbackSizes { 22, 44 };

BusImages busImages(const StatusItemPicture* picture, std::span<const int> sizes)
{
    BusImages list;
    if (picture)
        for (const int size : sizes)
            list.push_back(busImage(picture->draw(size, size, neutralInk)));
    return list;
}

std::string keyOf(const StatusItemPicture* picture) { return picture ? picture->key() : std::string(); }

} // namespace

StatusNotifierObject::StatusNotifierObject(QDBusConnection bus, const QString& id, const QString& title,
    const QString& iconFolder, std::function<void(const Press&)> pressed)
    : BusObject(interface)
    , bus_(std::move(bus))
    , pressed_(std::move(pressed))
    , blankIcon_(iconFolder.isEmpty() ? std::string() : id.toStdString() + "-blank")
    , properties_ { { "Category", "SystemServices" }, { "Id", id }, { "Title", title }, { "WindowId", 0 },
        { "Status", "Active" }, { "IconName", "" }, { "IconThemePath", iconFolder },
        { "IconPixmap", QVariant::fromValue(BusImages()) }, { "IconAccessibleDesc", "" },
        { "OverlayIconName", "" }, { "OverlayIconPixmap", QVariant::fromValue(BusImages()) },
        { "AttentionIconName", "" }, { "AttentionIconPixmap", QVariant::fromValue(BusImages()) },
        { "AttentionMovieName", "" }, { "ItemIsMenu", false },
        { "ToolTip", QVariant::fromValue(BusToolTip()) },
        { "Menu", QVariant::fromValue(QDBusObjectPath(menuPath)) }, { "XAyatanaLabel", "" },
        { "XAyatanaLabelGuide", "" }, { "XAyatanaOrderingIndex", 0U } }
{
}

void StatusNotifierObject::tell(const char* signal, const QVariantList& arguments) const
{
    if (!offered_)
        return;
    QDBusMessage message = QDBusMessage::createSignal(path, interface, signal);
    message.setArguments(arguments);
    bus_.send(message);
}

const StatusItemPicture* StatusNotifierObject::picture() const
{
    return (labelled_ ? face_.icon : face_.picture).get();
}

void StatusNotifierObject::setFace(const StatusItemFace& face)
{
    if (std::exchange(face_.visible, face.visible) != face.visible) {
        properties_["Status"] = face.visible ? "Active" : "Passive";
        tell("NewStatus", { properties_["Status"] });
    }
    face_ = face;
    describe();
}

void StatusNotifierObject::setLabelled(bool labelled)
{
    labelled_ = labelled;
    describe();
}

void StatusNotifierObject::describe()
{
    // The name stands for the icon alone, so it is right only where the picture shows nothing else.
    const bool named = labelled_ || keyOf(face_.icon.get()) == keyOf(face_.picture.get());
    // Hosts with a label put a placeholder where there is no name.
    const bool bare = labelled_ && !face_.icon && face_.iconName.empty();
    Shown now { .iconName = bare ? blankIcon_
            : named              ? face_.iconName
                                 : std::string(),
        .pictureKey = keyOf(picture()),
        .label = face_.label,
        .guide = face_.labelGuide,
        .toolTip = face_.toolTip,
        .help = face_.accessibilityHelp };
    if (now == shown_)
        return;
    const Shown before = std::exchange(shown_, std::move(now));
    if (before.iconName != shown_.iconName || before.pictureKey != shown_.pictureKey) {
        properties_["IconName"] = QString::fromStdString(shown_.iconName);
        picturesStale_ = true;
        tell("NewIcon");
    }
    if (before.toolTip != shown_.toolTip || before.help != shown_.help) {
        const QString text = QString::fromStdString(shown_.toolTip);
        properties_["ToolTip"]
            = QVariant::fromValue(BusToolTip { .iconName = {}, .images = {}, .title = text, .text = {} });
        const QString help = QString::fromStdString(shown_.help);
        properties_["IconAccessibleDesc"] = help.isEmpty() ? text : text + ". " + help;
        tell("NewToolTip");
    }
    if (before.label != shown_.label || before.guide != shown_.guide) {
        properties_["XAyatanaLabel"] = QString::fromStdString(shown_.label);
        properties_["XAyatanaLabelGuide"] = QString::fromStdString(shown_.guide);
        tell("XAyatanaNewLabel", { properties_["XAyatanaLabel"], properties_["XAyatanaLabelGuide"] });
    }
}

QVariantMap StatusNotifierObject::properties(const QString& wanted)
{
    if ((wanted.isEmpty() || wanted == "IconPixmap") && std::exchange(picturesStale_, false)) {
        const auto sizes = shown_.iconName.empty() ? std::span<const int>(iconSizes) : fallbackSizes;
        properties_["IconPixmap"] = QVariant::fromValue(busImages(picture(), sizes));
    }
    return properties_;
}

std::optional<QDBusMessage> StatusNotifierObject::answer(
    const QDBusMessage& message, const QString& call, const QDBusConnection&)
{
    const QVariantList given = message.arguments();
    if (call == "Activate(ii)" || call == "ContextMenu(ii)") {
        pressed_({ given[0].toInt(), given[1].toInt(), message.member() == "ContextMenu" });
    } else if (call == "SecondaryActivate(ii)") {
        // The middle button. Hosts that open the menu by themselves offer it in the left one's place.
        pressed_({});
    } else if (call != "Scroll(is)" && call != "XAyatanaSecondaryActivate(u)") {
        return std::nullopt;
    }
    return message.createReply();
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
  <property name="IconAccessibleDesc" type="s" access="read"/>
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
