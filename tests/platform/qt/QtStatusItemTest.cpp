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
#include <utility>
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

StatusItemFace face()
{
    return { .visible = true,
        .label = " cpu 3%",
        .labelGuide = "cpu 100%",
        .toolTip = "ostrel · cpu 3%",
        .images = { { .width = 2, .height = 1, .pixels = { 0x80FF2010, 0xFF000001 } } } };
}

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

    void makeItem()
    {
        item = bar.makeItem("dev.quent.ostrel", "ostrel");
        item->setFace(face());
    }

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
        return qdbus_cast<QVariantMap>(
            call(itemPath, propertiesOf, "GetAll", { itemInterface }).arguments().value(0));
    }

    QVariant property(const char* path, const char* interface, const char* name)
    {
        const QDBusMessage reply = call(path, propertiesOf, "Get", { interface, name });
        return qvariant_cast<QDBusVariant>(reply.arguments().value(0)).variant();
    }

    BusMenuLayout layout()
    {
        const QDBusMessage reply = call(menuPath, menuInterface, "GetLayout", { 0, -1, QStringList() });
        return qdbus_cast<BusMenuLayout>(reply.arguments().value(1));
    }

    QVariantList aboutToShow() { return call(menuPath, menuInterface, "AboutToShow", { 0 }).arguments(); }

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

    QtMainQueue queue;
    QtStatusBar bar { queue };
    QDBusConnection desktop
        = QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), "desktop");
    QString service = QString("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid());
    bustest::SignalLog log;
    std::unique_ptr<StatusItem> item;
};

TEST_F(QtStatusItemOnABus, ItsPropertiesAreReadInOneCall)
{
    makeItem();
    const QVariantMap all = properties();
    const QVariantMap plain { { "Category", "SystemServices" }, { "Id", "dev.quent.ostrel" },
        { "Title", "ostrel" }, { "Status", "Active" }, { "WindowId", 0 }, { "ItemIsMenu", false },
        { "XAyatanaLabel", " cpu 3%" }, { "XAyatanaLabelGuide", "cpu 100%" } };
    for (const auto& [name, value] : plain.asKeyValueRange())
        EXPECT_EQ(all.value(name), value) << name.toStdString();
    EXPECT_EQ(qvariant_cast<QDBusObjectPath>(all.value("Menu")).path(), menuPath);
    EXPECT_EQ(qdbus_cast<BusToolTip>(all.value("ToolTip")).title, "ostrel · cpu 3%");
    const auto images = qdbus_cast<BusImages>(all.value("IconPixmap"));
    ASSERT_EQ(images.size(), 1);
    EXPECT_EQ(std::pair(images[0].width, images[0].height), std::pair(2, 1));
    EXPECT_EQ(images[0].pixels.toHex(), "80ff2010ff000001") << "network byte order";
    EXPECT_EQ(property(itemPath, itemInterface, "Title"), "ostrel");
    EXPECT_EQ(property(menuPath, menuInterface, "Version"), 3U);
    const QDBusMessage xml = call(itemPath, "org.freedesktop.DBus.Introspectable", "Introspect");
    EXPECT_TRUE(xml.arguments().value(0).toString().contains("XAyatanaLabelGuide"));
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
    const Case cases[] { { propertiesOf, "Get", { itemInterface, "Nothing" }, "UnknownProperty" },
        { propertiesOf, "GetAll", { "org.example.Other" }, "UnknownInterface" },
        { propertiesOf, "Set",
            { itemInterface, "Status", QVariant::fromValue(QDBusVariant(QVariant("Active"))) },
            "UnknownMethod" },
        { itemInterface, "Activate", { "left" }, "UnknownMethod" },
        { itemInterface, "Explode", {}, "UnknownMethod" },
        { "org.example.Other", "Activate", { 1, 2 }, "UnknownInterface" } };
    for (const Case& c : cases)
        EXPECT_EQ(call(itemPath, c.interface, c.member, c.arguments).errorName(),
            QString("org.freedesktop.DBus.Error.") + c.error)
            << c.member;
}

TEST_F(QtStatusItemOnABus, HostsHearOnlyOfWhatReallyChanged)
{
    makeItem();
    properties();
    listen(itemInterface);
    StatusItemFace next = face();
    const auto hears = [&](const QStringList& signals, const QVariantList& arguments = {}) {
        item->setFace(next);
        EXPECT_EQ(heard(), signals);
        EXPECT_EQ(log.messages.isEmpty() ? QVariantList() : log.messages.back().arguments(), arguments);
    };
    hears({});
    next.toolTip = "ostrel · cpu 4%";
    hears({ "NewToolTip" });
    next.images = { { .width = 1, .height = 1, .pixels = { 0 } } };
    hears({ "NewIcon" });
    next.label = " cpu 4%";
    hears({ "XAyatanaNewLabel" }, { " cpu 4%", "cpu 100%" });
    next.visible = false;
    hears({ "NewStatus" }, { "Passive" });
    EXPECT_EQ(properties().value("Status"), "Passive");
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
    const BusMenuLayout root = layout();
    ASSERT_EQ(root.children.size(), 3);
    EXPECT_EQ(root.children[0].properties.value("label"), "built 1");
    listen(menuInterface);
    EXPECT_EQ(aboutToShow(), QVariantList { true });
    EXPECT_EQ(heard(), QStringList { "ItemsPropertiesUpdated" });
    EXPECT_EQ(layout().children[0].properties.value("label"), "built 2");

    const int row = root.children[2].id;
    const QDBusVariant none(QVariant(0));
    const auto event = [&](int id, const char* name) {
        const QVariantList arguments { id, name, QVariant::fromValue(none), 0U };
        return call(menuPath, menuInterface, "Event", arguments).errorName();
    };
    EXPECT_EQ(event(row, "hovered") + event(root.children[0].id, "clicked") + event(row, "clicked"), "");
    EXPECT_TRUE(spinUntil([&] { return pressed > 0; }));
    EXPECT_EQ(event(9999, "clicked"), "com.canonical.dbusmenu.Error.UnknownId");
    const BusMenuEvents clicks { { 9999, "clicked", none, 0 }, { row, "clicked", none, 0 } };
    const QDBusMessage group = call(menuPath, menuInterface, "EventGroup", { QVariant::fromValue(clicks) });
    EXPECT_EQ(qdbus_cast<QList<int>>(group.arguments().value(0)), QList<int> { 9999 });
    EXPECT_TRUE(spinUntil([&] { return pressed > 1; }));
    EXPECT_EQ(pressed, 2);
}

TEST_F(QtStatusItemOnABus, AnotherMenuIsAnnouncedAsANewLayout)
{
    makeItem();
    Menu rows { { .title = "one" } };
    item->setMenuBuilder([&] { return rows; });
    const int old = layout().children.value(0).id;
    listen(menuInterface);
    EXPECT_EQ(aboutToShow(), QVariantList { false });
    rows.push_back({ .title = "two" });
    EXPECT_EQ(aboutToShow(), QVariantList { true });
    EXPECT_EQ(heard(), QStringList { "LayoutUpdated" });
    EXPECT_EQ(layout().children.size(), 2);
    EXPECT_EQ(call(menuPath, menuInterface, "AboutToShow", { old }).errorName(),
        "com.canonical.dbusmenu.Error.UnknownId");
}

TEST_F(QtStatusItemOnABus, RegistersWithEveryWatcherThatComesOrIsThereAndLeavesTheBusAtItsEnd)
{
    for (const bool itemFirst : { true, true, false }) {
        if (itemFirst && !item)
            makeItem();
        else if (!itemFirst)
            item.reset();
        EXPECT_FALSE(item && item->isRegistered()) << "nobody is there";
        EXPECT_EQ(desktop.interface()->isServiceRegistered(service).value(), itemFirst);
        Watcher watcher;
        QDBusConnection own
            = QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), "watcher");
        EXPECT_TRUE(own.registerVirtualObject("/StatusNotifierWatcher", &watcher));
        EXPECT_TRUE(own.registerService("org.kde.StatusNotifierWatcher"));
        if (!itemFirst)
            makeItem();
        EXPECT_TRUE(spinUntil([&] { return item->isRegistered(); }));
        EXPECT_EQ(watcher.registered, QVariantList { service });
        own.unregisterService("org.kde.StatusNotifierWatcher");
        EXPECT_TRUE(spinUntil([&] { return !item->isRegistered(); })) << "the watcher has gone";
        QDBusConnection::disconnectFromBus("watcher");
    }
}

TEST_F(QtStatusItemOnABus, ANotificationReachesTheOtherPrograms)
{
    EXPECT_TRUE(desktop.connect({}, "/dev/quent/ostrel", "dev.quent.ostrel.DistributedNotification", "Posted",
        &log, SLOT(received(QDBusMessage))));
    desktop.interface()->isServiceRegistered(service);
    QtDistributedNotificationCenter(queue).post("dev.quent.ostrel.testbed", { { "action", "bänana" } });
    ASSERT_TRUE(spinUntil([&] { return !log.names.isEmpty(); }));
    const QVariantList arguments = log.messages[0].arguments();
    EXPECT_EQ(arguments.value(0), "dev.quent.ostrel.testbed");
    EXPECT_EQ(qdbus_cast<QVariantMap>(arguments.value(1)), (QVariantMap { { "action", "bänana" } }));
}

bool anItemWithoutABusIsQuiet()
{
    ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/ostrel-bus", 1);
    QtMainQueue queue;
    const auto item = QtStatusBar(queue).makeItem("dev.quent.ostrel", "ostrel");
    int built = 0;
    item->setFace(face());
    item->setMenuBuilder([&] { return Menu(static_cast<std::size_t>(built++)); });
    QtDistributedNotificationCenter(queue).post("dev.quent.ostrel.testbed", { { "action", "show" } });
    QCoreApplication::processEvents();
    return !item->isRegistered() && built == 1;
}

TEST(QtStatusItemWithoutABusDeathTest, DoesNothing)
{
    // In a process of its own, which has never seen the bus.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto judge = [] {
        const bool quiet = anItemWithoutABusIsQuiet();
        qt->TearDown();
        std::_Exit(quiet ? 0 : 1);
    };
    EXPECT_EXIT(judge(), testing::ExitedWithCode(0), "");
}

} // namespace

#include "QtStatusItemTest.moc"
