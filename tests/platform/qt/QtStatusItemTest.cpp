// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtStatusItem.h"

#include "platform/qt/QtDistributedNotificationCenter.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/StatusNotifierTypes.h"

#include "support/QtEnvironment.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusReply>
#include <QDBusVirtualObject>
#include <QGuiApplication>
#include <QScreen>

#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace bustest {

/// Keeps the signals that reach it.
class SignalLog final : public QObject {
    Q_OBJECT
public:
    QStringList names;
    QList<QDBusMessage> messages;

public Q_SLOTS:
    void received(const QDBusMessage& message)
    {
        names.push_back(message.member());
        messages.push_back(message);
    }
};

} // namespace bustest

namespace {

using namespace platform;

auto* const qt = testing::AddGlobalTestEnvironment(new QtEnvironment);

constexpr const char* itemInterface = "org.kde.StatusNotifierItem";
constexpr const char* menuInterface = "com.canonical.dbusmenu";
constexpr const char* propertiesOf = "org.freedesktop.DBus.Properties";
constexpr const char* itemPath = "/StatusNotifierItem";
constexpr const char* menuPath = "/MenuBar";

/// org.kde.StatusNotifierWatcher, as far as items call it.
class Watcher final : public QDBusVirtualObject {
public:
    [[nodiscard]] QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        if (message.member() != "RegisterStatusNotifierItem")
            return false;
        registered += message.arguments();
        connection.send(message.createReply());
        return true;
    }

    QVariantList registered;
};

/// A desktop on a connection of its own, and an item on the program's.
class QtStatusItemOnABus : public testing::Test {
protected:
    QtStatusItemOnABus()
    {
        queue.attach();
        registerStatusNotifierTypes();
    }

    ~QtStatusItemOnABus() override
    {
        item.reset();
        QDBusConnection::disconnectFromBus("desktop");
    }

    void makeItem() { item = bar.makeItem("dev.quent.ostrel", "ostrel"); }

    /// Calls the program, whose objects live on this same thread.
    QDBusMessage call(
        const char* path, const char* interface, const char* member, const QVariantList& arguments = {})
    {
        QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, member);
        message.setArguments(arguments);
        const QDBusPendingCall pending = desktop.asyncCall(message);
        EXPECT_TRUE(spinUntil([&] { return pending.isFinished(); })) << member;
        return pending.reply();
    }

    QVariantMap properties()
    {
        const QDBusMessage reply = call(itemPath, propertiesOf, "GetAll", { itemInterface });
        EXPECT_EQ(reply.type(), QDBusMessage::ReplyMessage) << reply.errorMessage().toStdString();
        return reply.arguments().isEmpty() ? QVariantMap()
                                           : qdbus_cast<QVariantMap>(reply.arguments().constFirst());
    }

    BusMenuLayout layout()
    {
        const QDBusMessage reply = call(menuPath, menuInterface, "GetLayout", { 0, -1, QStringList() });
        EXPECT_EQ(reply.arguments().size(), 2) << reply.errorMessage().toStdString();
        return reply.arguments().size() == 2 ? qdbus_cast<BusMenuLayout>(reply.arguments()[1])
                                             : BusMenuLayout();
    }

    void listen(const char* interface)
    {
        EXPECT_TRUE(desktop.connect(service, {}, interface, {}, &log, SLOT(received(QDBusMessage))));
        // What is asked of the bus behind the rule is answered behind it.
        desktop.interface()->isServiceRegistered(service);
    }

    /// The signals so far: they arrive before the answer to a later call.
    QStringList heard()
    {
        properties();
        return std::exchange(log.names, {});
    }

    /// Whether the watcher service can be had on a connection of its own.
    static QDBusConnection watcherConnection(Watcher& watcher)
    {
        QDBusConnection own
            = QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), "watcher");
        EXPECT_TRUE(own.registerVirtualObject("/StatusNotifierWatcher", &watcher));
        EXPECT_TRUE(own.registerService("org.kde.StatusNotifierWatcher"));
        return own;
    }

    QtMainQueue queue;
    QtStatusBar bar { queue };
    QDBusConnection desktop
        = QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), "desktop");
    QString service = QString("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid());
    bustest::SignalLog log;
    std::unique_ptr<StatusItem> item;
};

StatusItemFace face()
{
    return { .visible = true,
        .label = " cpu 3%",
        .labelGuide = "cpu 100%",
        .toolTip = "ostrel · cpu 3%",
        .images = { { .width = 2, .height = 1, .pixels = { 0x80FF2010, 0xFF000001 } } } };
}

TEST_F(QtStatusItemOnABus, ItsPropertiesAreReadInOneCall)
{
    makeItem();
    item->setFace(face());
    const QVariantMap all = properties();
    const QVariantMap plain { { "Category", "SystemServices" }, { "Id", "dev.quent.ostrel" },
        { "Title", "ostrel" }, { "Status", "Active" }, { "WindowId", 0 }, { "ItemIsMenu", false },
        { "XAyatanaLabel", " cpu 3%" }, { "XAyatanaLabelGuide", "cpu 100%" } };
    for (const auto& [name, value] : plain.asKeyValueRange())
        EXPECT_EQ(all.value(name), value) << name.toStdString();
    EXPECT_EQ(qvariant_cast<QDBusObjectPath>(all.value("Menu")).path(), menuPath);
    const auto toolTip = qdbus_cast<BusToolTip>(all.value("ToolTip"));
    EXPECT_EQ(toolTip.title, "ostrel · cpu 3%");
    const auto images = qdbus_cast<BusImages>(all.value("IconPixmap"));
    ASSERT_EQ(images.size(), 1);
    EXPECT_EQ(images[0].width, 2);
    EXPECT_EQ(images[0].height, 1);
    EXPECT_EQ(images[0].pixels.toHex(), "80ff2010ff000001") << "network byte order";
    StatusItemFace hidden = face();
    hidden.visible = false;
    item->setFace(hidden);
    const QDBusMessage status = call(itemPath, propertiesOf, "Get", { itemInterface, "Status" });
    ASSERT_EQ(status.arguments().size(), 1);
    EXPECT_EQ(qvariant_cast<QDBusVariant>(status.arguments()[0]).variant(), "Passive");
}

TEST_F(QtStatusItemOnABus, WhatItDoesntKnowIsAnError)
{
    makeItem();
    struct Case {
        const char* interface;
        const char* member;
        QVariantList arguments;
        const char* error;
    };
    const Case cases[] {
        { propertiesOf, "Get", { itemInterface, "Nothing" }, "org.freedesktop.DBus.Error.UnknownProperty" },
        { propertiesOf, "GetAll", { "org.example.Other" }, "org.freedesktop.DBus.Error.UnknownInterface" },
        { propertiesOf, "Set",
            { itemInterface, "Status", QVariant::fromValue(QDBusVariant(QVariant("Active"))) },
            "org.freedesktop.DBus.Error.UnknownMethod" },
        { itemInterface, "Activate", { "left" }, "org.freedesktop.DBus.Error.UnknownMethod" },
        { itemInterface, "Explode", {}, "org.freedesktop.DBus.Error.UnknownMethod" },
        { "org.example.Other", "Activate", { 1, 2 }, "org.freedesktop.DBus.Error.UnknownInterface" },
    };
    for (const Case& c : cases)
        EXPECT_EQ(call(itemPath, c.interface, c.member, c.arguments).errorName(), c.error) << c.member;
    const QDBusMessage xml = call(itemPath, "org.freedesktop.DBus.Introspectable", "Introspect");
    EXPECT_TRUE(xml.arguments().value(0).toString().contains("XAyatanaLabelGuide"));
}

TEST_F(QtStatusItemOnABus, HostsHearOnlyOfWhatReallyChanged)
{
    makeItem();
    item->setFace(face());
    properties();
    listen(itemInterface);
    item->setFace(face());
    EXPECT_EQ(heard(), QStringList());
    StatusItemFace next = face();
    next.toolTip = "ostrel · cpu 4%";
    item->setFace(next);
    EXPECT_EQ(heard(), QStringList { "NewToolTip" });
    next.images[0].pixels[1] = 0;
    item->setFace(next);
    EXPECT_EQ(heard(), QStringList { "NewIcon" });
    next.label = " cpu 4%";
    item->setFace(next);
    EXPECT_EQ(heard(), QStringList { "XAyatanaNewLabel" });
    EXPECT_EQ(log.messages.back().arguments(), (QVariantList { " cpu 4%", "cpu 100%" }));
    next.visible = false;
    item->setFace(next);
    EXPECT_EQ(heard(), QStringList { "NewStatus" });
    EXPECT_EQ(log.messages.back().arguments(), QVariantList { "Passive" });
}

TEST_F(QtStatusItemOnABus, APressRunsTheHandlerWithThePointersPlace)
{
    makeItem();
    std::vector<std::optional<Point>> presses;
    call(itemPath, itemInterface, "Activate", { 1, 2 });
    item->setActivateHandler([&](std::optional<Point> place) { presses.push_back(place); });
    for (const char* other : { "ContextMenu", "SecondaryActivate", "Activate" })
        EXPECT_EQ(call(itemPath, itemInterface, other, { 100, 50 }).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(call(itemPath, itemInterface, "Scroll", { 1, "vertical" }).type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(spinUntil([&] { return presses.size() == 2; }));
    EXPECT_EQ(presses[0], std::nullopt);
    const double height = QGuiApplication::primaryScreen()->geometry().height();
    EXPECT_EQ(presses[1], (Point { 100, height - 50 }));
}

TEST_F(QtStatusItemOnABus, TheMenuIsBuiltWhenItOpensAndAClickRunsTheRow)
{
    makeItem();
    int built = 0;
    int pressed = 0;
    item->setMenuBuilder([&] {
        ++built;
        return Menu { { .title = "built " + std::to_string(built) }, { .separator = true },
            { .title = "press", .action = [&pressed] { ++pressed; } } };
    });
    BusMenuLayout root = layout();
    ASSERT_EQ(root.children.size(), 3);
    EXPECT_EQ(root.children[0].properties.value("label"), "built 1");
    listen(menuInterface);
    const QDBusMessage shown = call(menuPath, menuInterface, "AboutToShow", { 0 });
    EXPECT_EQ(shown.arguments(), QVariantList { true });
    EXPECT_EQ(heard(), QStringList { "ItemsPropertiesUpdated" });
    EXPECT_EQ(layout().children[0].properties.value("label"), "built 2");

    const int row = root.children[2].id;
    const auto event = [&](int id, const char* name) {
        return call(menuPath, menuInterface, "Event",
            { id, name, QVariant::fromValue(QDBusVariant(QVariant(0))), 0U });
    };
    EXPECT_EQ(event(row, "hovered").type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(event(root.children[0].id, "clicked").type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(event(row, "clicked").type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(spinUntil([&] { return pressed > 0; }));
    EXPECT_EQ(event(9999, "clicked").errorName(), "com.canonical.dbusmenu.Error.UnknownId");
    const BusMenuEvent click {
        .id = row, .name = "clicked", .data = QDBusVariant(QVariant(0)), .timestamp = 0
    };
    BusMenuEvent astray = click;
    astray.id = 9999;
    const QDBusMessage group = call(
        menuPath, menuInterface, "EventGroup", { QVariant::fromValue(BusMenuEvents { astray, click }) });
    ASSERT_EQ(group.arguments().size(), 1) << group.errorMessage().toStdString();
    EXPECT_EQ(qdbus_cast<QList<int>>(group.arguments()[0]), QList<int> { 9999 });
    EXPECT_TRUE(spinUntil([&] { return pressed > 1; }));
    EXPECT_EQ(pressed, 2);
}

TEST_F(QtStatusItemOnABus, AnotherMenuIsAnnouncedAsANewLayout)
{
    makeItem();
    Menu rows { { .title = "one" } };
    item->setMenuBuilder([&] { return rows; });
    const int old = layout().children[0].id;
    listen(menuInterface);
    EXPECT_EQ(call(menuPath, menuInterface, "AboutToShow", { 0 }).arguments(), QVariantList { false });
    rows.push_back({ .title = "two" });
    EXPECT_EQ(call(menuPath, menuInterface, "AboutToShow", { 0 }).arguments(), QVariantList { true });
    EXPECT_EQ(heard(), QStringList { "LayoutUpdated" });
    EXPECT_EQ(layout().children.size(), 2);
    EXPECT_EQ(call(menuPath, menuInterface, "AboutToShow", { old }).errorName(),
        "com.canonical.dbusmenu.Error.UnknownId");
    const QDBusMessage version = call(menuPath, propertiesOf, "Get", { menuInterface, "Version" });
    ASSERT_EQ(version.arguments().size(), 1);
    EXPECT_EQ(qvariant_cast<QDBusVariant>(version.arguments()[0]).variant(), 3U);
}

TEST_F(QtStatusItemOnABus, RegistersWithEveryWatcherThatComes)
{
    makeItem();
    properties();
    EXPECT_FALSE(item->isRegistered()) << "nobody is there";
    for (int round = 0; round < 2; ++round) {
        Watcher watcher;
        {
            const QDBusConnection own = watcherConnection(watcher);
            EXPECT_TRUE(spinUntil([&] { return item->isRegistered(); }));
            EXPECT_EQ(watcher.registered, QVariantList { service });
        }
        QDBusConnection::disconnectFromBus("watcher");
        EXPECT_TRUE(spinUntil([&] { return !item->isRegistered(); })) << "the watcher has gone";
    }
}

TEST_F(QtStatusItemOnABus, RegistersWithAWatcherThatWasThereFirstAndLeavesTheBusAtItsEnd)
{
    Watcher watcher;
    const QDBusConnection own = watcherConnection(watcher);
    makeItem();
    EXPECT_TRUE(spinUntil([&] { return item->isRegistered(); }));
    EXPECT_EQ(watcher.registered.size(), 1);
    item.reset();
    EXPECT_FALSE(desktop.interface()->isServiceRegistered(service).value());
    QDBusConnection::disconnectFromBus("watcher");
}

TEST_F(QtStatusItemOnABus, ANotificationReachesTheOtherPrograms)
{
    EXPECT_TRUE(desktop.connect({}, "/dev/quent/ostrel", "dev.quent.ostrel.DistributedNotification", "Posted",
        &log, SLOT(received(QDBusMessage))));
    desktop.interface()->isServiceRegistered(service);
    QtDistributedNotificationCenter().post("dev.quent.ostrel.testbed", { { "action", "bänana" } });
    ASSERT_TRUE(spinUntil([&] { return !log.names.isEmpty(); }));
    const QVariantList arguments = log.messages[0].arguments();
    ASSERT_EQ(arguments.size(), 2);
    EXPECT_EQ(arguments[0], "dev.quent.ostrel.testbed");
    EXPECT_EQ(qdbus_cast<QVariantMap>(arguments[1]), (QVariantMap { { "action", "bänana" } }));
}

bool anItemWithoutABusIsQuiet()
{
    ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/ostrel-bus", 1);
    QtMainQueue queue;
    queue.attach();
    QtStatusBar bar(queue);
    const auto item = bar.makeItem("dev.quent.ostrel", "ostrel");
    int built = 0;
    item->setFace(face());
    item->setMenuBuilder([&] {
        ++built;
        return Menu { { .title = "a" } };
    });
    item->setActivateHandler([](std::optional<Point>) {});
    QtDistributedNotificationCenter().post("dev.quent.ostrel.testbed", { { "action", "show" } });
    QCoreApplication::processEvents();
    return !item->isRegistered() && built == 1;
}

TEST(QtStatusItemWithoutABusDeathTest, DoesNothing)
{
    // In a process of its own, which has never seen the bus.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            const bool quiet = anItemWithoutABusIsQuiet();
            qt->TearDown();
            std::_Exit(quiet ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

} // namespace

#include "QtStatusItemTest.moc"
