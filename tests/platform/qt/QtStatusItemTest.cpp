// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtStatusItem.h"

#include "platform/qt/QtMainQueue.h"
#include "platform/qt/StatusNotifierTypes.h"

#include "platform/qt/OtherProgram.h"

#include <QAction>
#include <QApplication>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QMenu>
#include <QPointer>
#include <QScreen>

#include <gtest/gtest.h>
#include <sys/prctl.h>

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

[[maybe_unused]] auto* const qt = testing::AddGlobalTestEnvironment(new QtEnvironment);

constexpr const char* itemInterface = "org.kde.StatusNotifierItem";
constexpr const char* menuInterface = "com.canonical.dbusmenu";
constexpr const char* propertiesOf = "org.freedesktop.DBus.Properties";
constexpr const char* watcherInterface = "org.kde.StatusNotifierWatcher";
constexpr const char* itemPath = "/StatusNotifierItem";
constexpr const char* menuPath = "/MenuBar";

/// org.kde.StatusNotifierWatcher, as far as items call it, on a connection of its own from its coming to its
/// end.
class Watcher final : public QDBusVirtualObject {
public:
    explicit Watcher(bool hosted = true)
        : hosted_(hosted)
    {
        EXPECT_TRUE(own_.registerVirtualObject("/StatusNotifierWatcher", this));
        EXPECT_TRUE(own_.registerService(watcherInterface));
    }
    ~Watcher() override
    {
        own_.unregisterService(watcherInterface);
        QDBusConnection::disconnectFromBus("watcher");
    }

    [[nodiscard]] QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        QDBusMessage reply = message.createReply();
        if (message.member() == "GetAll") {
            QStringList items;
            for (const QVariant& item : registered)
                items += item.toString() + "/StatusNotifierItem";
            reply << QVariantMap { { "RegisteredStatusNotifierItems", items },
                { "IsStatusNotifierHostRegistered", hosted_ } };
        } else if (message.member() == "RegisterStatusNotifierItem") {
            registered += message.arguments();
        }
        return connection.send(reply);
    }

    QVariantList registered;

private:
    bool hosted_; ///< whether it says that somebody shows the items
    QDBusConnection own_
        = QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), "watcher");
};

/// A square of one colour that counts how often it is drawn.
class Square final : public StatusItemPicture {
public:
    explicit Square(std::string key)
        : key_(std::move(key))
    {
    }
    [[nodiscard]] Image draw(int width, int height, std::uint32_t ink) const override
    {
        ++drawn;
        const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
        return { width, height, std::vector<std::uint32_t>(count, 0x80000000U | ink) };
    }
    [[nodiscard]] std::string key() const override { return key_; }

    mutable int drawn = 0;

private:
    std::string key_;
};

StatusItemFace face()
{
    const auto mark = std::make_shared<Square>("mark");
    return { .visible = true,
        .length = 40,
        .label = " cpu 3%",
        .labelGuide = "cpu 100%",
        .toolTip = "ostrel · cpu 3%",
        .accessibilityHelp = "click opens",
        .iconName = "mark-symbolic",
        .icon = mark,
        .picture = mark };
}

/// A desktop on a connection of its own, and an item on the program's.
class QtStatusItemOnABus : public testing::Test {
protected:
    QtStatusItemOnABus()
    {
        queue.attach();
        registerStatusNotifierTypes();
    }

    void makeItem()
    {
        item = bar.makeItem("dev.quent.ostrel", "ostrel", "/icons");
        item->setFace(face());
    }

    void makeShownItem()
    {
        makeItem();
        EXPECT_TRUE(spinUntil([this] { return item->placement().has_value(); }));
    }

    QDBusMessage call(
        const char* path, const char* interface, const char* member, const QVariantList& arguments = {})
    {
        return desktop.call(service, path, interface, member, arguments);
    }

    /// Whether the item's name is on the bus; behind this the bus knows all that was asked of it before.
    bool isOnTheBus() { return desktop.bus.interface()->isServiceRegistered(service); }

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

    void listen(const char* interface)
    {
        EXPECT_TRUE(desktop.bus.connect(service, {}, interface, {}, &log, SLOT(received(QDBusMessage))));
        isOnTheBus();
    }

    /// The signals so far: they arrive before the answer to a later call.
    QStringList heard()
    {
        property(itemPath, itemInterface, "Title");
        return std::exchange(log.names, {});
    }

    QtMainQueue queue;
    X11Struts struts;
    QtStatusBar bar { queue, struts };
    OtherProgram desktop;
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
        { "IconName", "mark-symbolic" }, { "IconThemePath", "/icons" },
        { "IconAccessibleDesc", "ostrel · cpu 3%. click opens" }, { "XAyatanaLabel", " cpu 3%" },
        { "XAyatanaLabelGuide", "cpu 100%" } };
    for (const auto& [name, value] : plain.asKeyValueRange())
        EXPECT_EQ(all.value(name), value) << name.toStdString();
    EXPECT_EQ(qvariant_cast<QDBusObjectPath>(all.value("Menu")).path(), menuPath);
    EXPECT_EQ(qdbus_cast<BusToolTip>(all.value("ToolTip")).title, "ostrel · cpu 3%");
    const auto images = qdbus_cast<BusImages>(all.value("IconPixmap"));
    ASSERT_FALSE(images.isEmpty());
    EXPECT_EQ(std::pair(images[0].width, images[0].height), std::pair(22, 22));
    EXPECT_EQ(images[0].pixels.left(4).toHex(), "80858a90") << "grey, in network byte order";
    EXPECT_EQ(images[0].pixels.size(), 22 * 22 * 4);
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
        { itemInterface, "Activate", { "left" }, "InvalidArgs" },
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
    const auto values = std::make_shared<Square>("values");
    next.picture = values;
    hears({ "NewIcon" });
    EXPECT_EQ(values->drawn, 0) << "nobody has asked for it";
    EXPECT_EQ(properties().value("IconName"), "") << "that names the mark alone";
    EXPECT_EQ(values->drawn, 7);
    next.picture = std::make_shared<Square>("values");
    hears({});
    next.label = " cpu 4%";
    hears({ "XAyatanaNewLabel" }, { " cpu 4%", "cpu 100%" });
    next.visible = false;
    item->setFace(next);
    EXPECT_FALSE(isOnTheBus()) << "a hidden item has left";
    EXPECT_TRUE(spinUntil([&] { return log.names == QStringList { "NewStatus" }; }));
    EXPECT_EQ(log.messages.back().arguments(), QVariantList { "Passive" });
    next.visible = true;
    item->setFace(next);
    EXPECT_EQ(properties().value("Status"), "Active");
}

TEST_F(QtStatusItemOnABus, APressRunsTheHandlerWithThePointersPlace)
{
    makeItem();
    std::vector<StatusItemPress> presses;
    call(itemPath, itemInterface, "Activate", { 1, 2 });
    item->setPressHandler([&](const StatusItemPress& press) { presses.push_back(press); });
    const double height = QGuiApplication::primaryScreen()->geometry().height();
    struct Case {
        const char* member;
        int x;
        std::optional<Point> place;
        bool secondary;
    };
    for (const Case& c : { Case { "ContextMenu", 100, Point { 100, height - 50 }, true },
             { "SecondaryActivate", 100, std::nullopt, false },
             { "Activate", 100, Point { 100, height - 50 }, false },
             { "Activate", 0, std::nullopt, false } }) {
        presses.clear();
        const QDBusMessage reply = call(itemPath, itemInterface, c.member, { c.x, c.x / 2 });
        EXPECT_EQ(reply.type(), QDBusMessage::ReplyMessage);
        EXPECT_TRUE(spinUntil([&] { return presses.size() == 1; })) << c.member;
        EXPECT_EQ(presses[0].place, c.place) << c.member << c.x;
        EXPECT_EQ(presses[0].secondary, c.secondary) << c.member;
    }
    EXPECT_EQ(call(itemPath, itemInterface, "Scroll", { 1, "vertical" }).type(), QDBusMessage::ReplyMessage);
}

TEST_F(QtStatusItemOnABus, TheMenuPopsUpWhereThePressWasAndItsRowsRunOnTheQueue)
{
    makeItem();
    int pressed = 0;
    item->setMenuBuilder([&] {
        return Menu { { .title = "a & b", .toolTip = "why" }, { .separator = true },
            { .title = "below",
                .submenu = { { .title = "press", .checked = true, .action = [&] { ++pressed; } } } } };
    });
    item->setPressHandler([&](const StatusItemPress&) { item->popUpMenu(); });
    call(itemPath, itemInterface, "ContextMenu", { 40, 30 });
    QPointer<QMenu> menu;
    const auto isOpen = [&] {
        menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        return menu != nullptr;
    };
    ASSERT_TRUE(spinUntil(isOpen));
    EXPECT_EQ(menu->pos(), QPoint(40, 30));
    const auto rows = menu->actions();
    ASSERT_EQ(rows.size(), 3);
    EXPECT_EQ(rows[0]->text(), "a && b");
    EXPECT_EQ(rows[0]->toolTip(), "why");
    EXPECT_FALSE(rows[0]->isEnabled());
    EXPECT_TRUE(rows[1]->isSeparator());
    QAction* row = rows[2]->menu()->actions()[0];
    EXPECT_TRUE(row->isChecked());
    row->trigger();
    EXPECT_EQ(pressed, 0) << "never on the menu's stack";
    menu->close();
    EXPECT_TRUE(spinUntil([&] { return pressed == 1 && !menu; }));
}

TEST_F(QtStatusItemOnABus, TheMenuIsBuiltWhenItOpensAndTellsItsChangesAndAClickRunsTheRow)
{
    makeItem();
    int pressed = 0;
    Menu rows { { .title = "one" }, { .title = "press", .action = [&pressed] { ++pressed; } } };
    item->setMenuBuilder([&] { return rows; });
    const auto ids = layout().children;
    ASSERT_EQ(ids.size(), 2);
    listen(menuInterface);
    const auto opens = [&](bool changed, const QStringList& signals) {
        EXPECT_EQ(call(menuPath, menuInterface, "AboutToShow", { 0 }).arguments(), QVariantList { changed });
        EXPECT_EQ(heard(), signals);
    };
    opens(false, {});
    rows[0].title = "two";
    opens(true, { "ItemsPropertiesUpdated" });
    EXPECT_EQ(layout().children[0].properties.value("label"), "two");

    constexpr const char* unknown = "com.canonical.dbusmenu.Error.UnknownId";
    const QDBusVariant none(QVariant(0));
    const auto event = [&](int id, const char* name) {
        return call(menuPath, menuInterface, "Event", { id, name, QVariant::fromValue(none), 0U })
            .errorName();
    };
    const int row = ids[1].id;
    EXPECT_EQ(event(row, "hovered") + event(ids[0].id, "clicked") + event(row, "clicked"), "");
    EXPECT_TRUE(spinUntil([&] { return pressed > 0; }));
    EXPECT_EQ(event(9999, "clicked"), unknown);
    const BusMenuEvents clicks { { 9999, "clicked", none, 0 }, { row, "clicked", none, 0 } };
    const QDBusMessage group = call(menuPath, menuInterface, "EventGroup", { QVariant::fromValue(clicks) });
    EXPECT_EQ(qdbus_cast<QList<int>>(group.arguments().value(0)), QList<int> { 9999 });
    EXPECT_TRUE(spinUntil([&] { return pressed > 1; }));
    EXPECT_EQ(pressed, 2);

    rows.push_back({ .title = "three" });
    opens(true, { "LayoutUpdated" });
    EXPECT_EQ(layout().children.size(), 3);
    EXPECT_EQ(call(menuPath, menuInterface, "AboutToShow", { row }).errorName(), unknown);
}

TEST_F(QtStatusItemOnABus, RegistersWithEveryWatcherThatComesOrIsThereAndLeavesTheBusAtItsEnd)
{
    for (const bool itemFirst : { true, true, false }) {
        if (!itemFirst)
            item.reset();
        else if (!item)
            makeItem();
        EXPECT_FALSE(item && item->placement()) << "nobody is there";
        EXPECT_EQ(isOnTheBus(), itemFirst);
        std::optional<Watcher> tray(std::in_place);
        if (!itemFirst)
            makeItem();
        EXPECT_TRUE(spinUntil([&] { return item->placement().has_value(); }));
        EXPECT_EQ(tray->registered, QVariantList { service });
        tray.reset();
        EXPECT_TRUE(spinUntil([&] { return !item->placement(); })) << "the watcher has gone";
    }
}

TEST_F(QtStatusItemOnABus, ItsPlaceIsTheLastPresssElseTheScreensUpperRight)
{
    const Watcher tray;
    makeShownItem();
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    EXPECT_EQ(item->placement()->frame, (Rect { screen.width() - 24.0, screen.height() - 24.0, 24, 24 }));
    EXPECT_TRUE(item->placement()->seen);
    call(itemPath, itemInterface, "Activate", { 300, 5 });
    EXPECT_EQ(item->placement()->frame, (Rect { 288, screen.height() - 24.0, 24, 24 }))
        << "kept on the screen";
    StatusItemFace hidden = face();
    hidden.visible = false;
    item->setFace(hidden);
    EXPECT_FALSE(item->placement());
}

TEST_F(QtStatusItemOnABus, AWatcherThatNobodyShowsItemsForHasNoPlaceForIt)
{
    const Watcher tray(false);
    makeItem();
    ASSERT_TRUE(spinUntil([&] { return !tray.registered.isEmpty(); }));
    properties(); // two round trips behind: the list has been asked for
    properties();
    EXPECT_FALSE(item->placement());
}

TEST_F(QtStatusItemOnABus, AHostThatWritesLabelsGetsTheIconAndTheOthersEverythingInOnePicture)
{
    char before[16] = {};
    ::prctl(PR_GET_NAME, before);
    StatusItemFace values = face();
    values.picture = std::make_shared<Square>("values");
    StatusItemFace bare = values;
    bare.icon = nullptr;
    bare.iconName.clear();
    // What has a name goes over the bus in two sizes alone, and what shows figures in each that hosts draw
    // at.
    for (const auto& [host, shown, name, sizes] : { std::tuple { "sfwbar", values, "mark-symbolic", 2 },
             { "ayatana-indicator-service", bare, "dev.quent.ostrel-blank", 0 },
             { "lxqt-panel", values, "", 7 }, { "sfwbar", face(), "mark-symbolic", 2 },
             { "lxqt-panel", face(), "mark-symbolic", 2 } }) {
        ::prctl(PR_SET_NAME, host);
        const Watcher tray;
        makeShownItem();
        item->setFace(shown);
        EXPECT_EQ(properties().value("IconName"), name) << host;
        const auto images = qdbus_cast<BusImages>(properties().value("IconPixmap"));
        EXPECT_EQ(images.size(), sizes) << host;
        item.reset();
    }
    ::prctl(PR_SET_NAME, before);
}

} // namespace

#include "QtStatusItemTest.moc"
