// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtUrlEvents.h"

#include "platform/qt/QtDistributedNotificationCenter.h"

#include "platform/qt/OtherProgram.h"
#include "support/VirtualTime.h"

#include <QDBusVirtualObject>
#include <QThread>

#include <gtest/gtest.h>

namespace {

using namespace platform;

constexpr const char* name = "dev.quent.ostrel";
constexpr const char* path = "/dev/quent/ostrel";
constexpr const char* application = "org.freedesktop.Application";

QString owner(const OtherProgram& other) { return other.bus.interface()->serviceOwner(name); }

/// QtUrlEvents, and what came of it.
struct Listening {
    Listening()
    {
        events.start({ .open = [this](const std::string& url) { heard.push_back(url); },
            .reopen = [this] { heard.emplace_back("reopen"); },
            .action = [this](const std::string& action) { heard.push_back("action " + action); } });
    }

    VirtualTime time;
    std::vector<std::string> heard;
    QtUrlEvents events { time, name };
};

TEST(QtUrlEvents, CallsAreAnsweredAtOnceAndHandledInTurnsOfTheirOwn)
{
    OtherProgram other;
    Listening own;
    ASSERT_TRUE(spinUntil([&] { return !owner(other).isEmpty(); }));
    QStringList many { QString(4096, 'a'), QString(4097, 'b') };
    for (int n = 2; n < 17; ++n)
        many << QString::number(n);
    for (const auto& [member, arguments, answer] :
        std::vector<std::tuple<const char*, QVariantList, QString>> {
            { "Open", { QStringList { "ostrel:a", "ostrel:b" }, QVariantMap() }, "" },
            { "Activate", { QVariantMap { { "desktop-startup-id", 1 } } }, "" },
            { "ActivateAction", { "show", QVariantList(), QVariantMap() }, "" },
            { "ActivateAction", { QString(4097, 'c'), QVariantList(), QVariantMap() }, "" },
            { "ActivateAction", { "show", QVariantMap() }, "org.freedesktop.DBus.Error.InvalidArgs" },
            { "Open", { many, QVariantMap() }, "" },
            { "Open", { "ostrel:a", QVariantMap() }, "org.freedesktop.DBus.Error.InvalidArgs" },
            { "Activate", {}, "org.freedesktop.DBus.Error.InvalidArgs" },
            { "Close", {}, "org.freedesktop.DBus.Error.UnknownMethod" },
        })
        EXPECT_EQ(other.call(name, path, application, member, arguments).errorName(), answer) << member;
    EXPECT_EQ(other.call(name, path, "org.freedesktop.DBus.Introspectable", "Introspect").signature(), "s");
    EXPECT_TRUE(own.heard.empty()) << "nothing runs inside the bus's own handler";
    own.time.runPosted();
    std::vector<std::string> expected { "ostrel:a", "ostrel:b", "reopen", "action show",
        std::string(4096, 'a') };
    for (int n = 2; n < 16; ++n)
        expected.push_back(std::to_string(n));
    EXPECT_EQ(own.heard, expected);
}

TEST(QtUrlEvents, TheNameIsTakenFromNobodyAndTakenOnceItsOwnerIsGone)
{
    OtherProgram other;
    ASSERT_TRUE(other.bus.registerService(name));
    Listening own;
    const QString mine = QDBusConnection::sessionBus().baseService();
    QDBusConnection::sessionBus().interface()->serviceOwner(name);
    EXPECT_EQ(owner(other), other.bus.baseService());
    ASSERT_TRUE(other.bus.unregisterService(name));
    EXPECT_TRUE(spinUntil([&] { return owner(other) == mine; }));
    own.events.stop();
    EXPECT_TRUE(spinUntil([&] { return owner(other).isEmpty(); }));
}

TEST(QtUrlEvents, WhatIsHandedOverReachesTheOwnerAndNeverThisProcess)
{
    struct Elder final : QDBusVirtualObject {
        bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
        {
            calls << message.member() + message.signature() + message.arguments()[0].toStringList().join(',');
            return connection.send(message.createReply());
        }
        [[nodiscard]] QString introspect(const QString&) const override { return {}; }
        QStringList calls;
    };
    OtherProgram other;
    Listening own;
    ASSERT_TRUE(spinUntil([&] { return !owner(other).isEmpty(); }));
    EXPECT_FALSE(own.events.handOver({})) << "nobody else is there";
    EXPECT_EQ(owner(other), "") << "the elder may have it";
    Elder elder;
    QThread thread;
    elder.moveToThread(&thread);
    thread.start();
    ASSERT_TRUE(other.bus.registerVirtualObject(path, &elder));
    ASSERT_TRUE(other.bus.registerService(name));
    EXPECT_TRUE(own.events.handOver({ "ostrel:a", "ostrel:\xff" }));
    EXPECT_TRUE(own.events.handOver({}));
    thread.quit();
    thread.wait();
    EXPECT_EQ(elder.calls, (QStringList { "Openasa{sv}ostrel:a,ostrel:\uFFFD", "Activatea{sv}" }));
    own.time.runPosted();
    EXPECT_TRUE(own.heard.empty());
}

TEST(QtDistributedNotificationCenter, AnObserverHearsTextsOfItsNameFromAnySenderUntilItEnds)
{
    VirtualTime time;
    QtDistributedNotificationCenter center(time);
    std::vector<UserInfo> heard;
    auto observation = center.observe("a", [&](const UserInfo& info) { heard.push_back(info); });
    const auto last = center.observe("last", [&](const UserInfo& info) { heard.push_back(info); });
    QDBusConnection::sessionBus().interface()->isServiceRegistered(name); // the bus knows of them behind this
    const OtherProgram late;
    const auto post = [&](const QVariantList& arguments) {
        late.send(path, "dev.quent.ostrel.DistributedNotification", "Posted", arguments);
    };
    const auto hearAll = [&] {
        const auto before = heard.size();
        post({ "last", QVariantMap() });
        EXPECT_TRUE(spinUntil([&] {
            time.runPosted();
            return heard.size() > before && heard.back().empty();
        }));
    };
    post({ "a", QVariantMap { { "action", "hide" }, { "n", 1 }, { "list", QStringList { "x" } } } });
    post({ "b", QVariantMap { { "action", "other" } } });
    post({ "a", "hide" });
    post({ "a" });
    hearAll();
    center.post("a", { { "action", "bänana" } });
    hearAll();
    EXPECT_EQ(
        heard, (std::vector<UserInfo> { { { "action", "hide" } }, {}, { { "action", "bänana" } }, {} }));
    post({ "a", QVariantMap { { "action", "late" } } });
    observation.reset();
    hearAll();
    EXPECT_EQ(heard.size(), 5U);
}

} // namespace
