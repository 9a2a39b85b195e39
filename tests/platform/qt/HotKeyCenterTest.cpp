// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtHotKeyCenter.h"
#include "platform/qt/QtKeyMonitor.h"

#include "platform/qt/OtherProgram.h"
#include "support/VirtualTime.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QKeyEvent>
#include <QList>
#include <QWindow>

#include <cstdlib>

#include <gtest/gtest.h>

namespace {

using namespace platform;
using Kind = HotKeyStanding::Kind;

constexpr const char* service = "org.freedesktop.portal.Desktop";
constexpr const char* path = "/org/freedesktop/portal/desktop";
constexpr const char* shortcuts = "org.freedesktop.portal.GlobalShortcuts";

/// A shortcut on the bus.
struct Bound {
    QString id;
    QVariantMap properties;
};

QDBusArgument& operator<<(QDBusArgument& argument, const Bound& shortcut)
{
    argument.beginStructure();
    argument << shortcut.id << shortcut.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, Bound& shortcut)
{
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.properties;
    argument.endStructure();
    return argument;
}

/// The portal's shortcuts, whose user the test plays.
class Portal final : public QDBusVirtualObject {
public:
    [[nodiscard]] QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        const QString member = message.member();
        const QVariantList arguments = message.arguments();
        calls.push_back(member.toStdString());
        QDBusMessage reply = message.createReply();
        if (member == "Register") {
            program = arguments.value(0).toString().toStdString();
        } else if (member == "Get") {
            reply = known ? message.createReply(QVariant::fromValue(QDBusVariant(1U)))
                          : message.createErrorReply(QDBusError::InvalidArgs, "no such interface");
        } else if (member == "CreateSession" || member == "BindShortcuts") {
            const auto options = qdbus_cast<QVariantMap>(arguments.last());
            const auto handle = [&](const char* kind, const char* token) {
                const QString us = message.service().mid(1).replace('.', '_');
                return QStringLiteral("%1/%2/%3/%4").arg(path, kind, us, options.value(token).toString());
            };
            request = handle("request", "handle_token");
            if (member == "CreateSession")
                session = handle("session", "session_handle_token");
            else
                for (const Bound& shortcut : qdbus_cast<QList<Bound>>(arguments[1]))
                    wish = (shortcut.id + " " + shortcut.properties.value("preferred_trigger").toString())
                               .toStdString();
            reply << QVariant::fromValue(QDBusObjectPath(request));
        }
        connection.send(reply);
        if (member == "CreateSession" && sessions)
            respond(0, { { "session_handle", session } });
        return true;
    }

    /// The answer to the last request.
    void respond(unsigned code, const QVariantMap& results) const
    {
        desktop.send(request.toUtf8(), "org.freedesktop.portal.Request", "Response", { code, results });
    }

    /// What is bound, as the bus has it.
    [[nodiscard]] static QVariant bound(const char* id, const char* key)
    {
        return QVariant::fromValue(
            QList<Bound> { { id, { { "description", "x" }, { "trigger_description", key } } } });
    }

    void activate(const QString& inSession, const char* id) const
    {
        desktop.send(path, shortcuts, "Activated",
            { QVariant::fromValue(QDBusObjectPath(inSession)), id, qulonglong { 1 }, QVariantMap() });
    }

    OtherProgram desktop;
    bool known = true; ///< it has shortcuts
    bool sessions = true; ///< they are given at once
    std::vector<std::string> calls;
    std::string program, wish;
    QString request, session;
};

class HotKeyCenterUnderWayland : public testing::Test {
protected:
    HotKeyCenterUnderWayland()
    {
        ::setenv("WAYLAND_DISPLAY", "wayland-0", 1);
        qDBusRegisterMetaType<Bound>();
        qDBusRegisterMetaType<QList<Bound>>();
        portal.desktop.bus.registerVirtualObject(path, &portal, QDBusConnection::SubPath);
        center.connect({ .pressed = [this] { told.emplace_back("pressed"); },
            .refused
            = [this](HotKeyRefusal refusal) { told.push_back("refused " + std::to_string(int(refusal))); },
            .changed = [this] { told.push_back(stands()); } });
    }
    ~HotKeyCenterUnderWayland() override { ::unsetenv("WAYLAND_DISPLAY"); }

    void startPortal() { EXPECT_TRUE(portal.desktop.bus.registerService(service)); }

    [[nodiscard]] std::string stands() const
    {
        const HotKeyStanding standing = center.standing();
        return std::to_string(int(standing.kind)) + " " + standing.name;
    }

    /// Waits until that is the last of what was told, or of the portal's calls, and forgets them.
    bool hears(const std::string& what) { return endsWith(told, what); }
    bool isAsked(const char* member) { return endsWith(portal.calls, member); }

    bool endsWith(std::vector<std::string>& words, const std::string& last)
    {
        const bool ended = spinUntil([&] {
            time.runPosted();
            return !words.empty() && words.back() == last;
        });
        words.clear();
        return ended;
    }

    VirtualTime time;
    Portal portal;
    QtHotKeyCenter center { time };
    std::vector<std::string> told;
    const HotKey wish { 46, ModifierFlag::option | ModifierFlag::command, "m" };
};

constexpr const char* asked = "2 ";

TEST_F(HotKeyCenterUnderWayland, ThePortalIsAskedAndItsWordOnTheKeyCounts)
{
    startPortal();
    EXPECT_TRUE(center.registerHotKey(wish)) << "at once";
    EXPECT_EQ(stands(), asked);
    EXPECT_TRUE(isAsked("BindShortcuts"));
    EXPECT_EQ(portal.program, "dev.quent.ostrel") << "before all else";
    EXPECT_EQ(portal.wish, "toggle-panel ALT+LOGO+m");
    EXPECT_EQ(stands(), asked);
    portal.respond(0, { { "shortcuts", Portal::bound("toggle-panel", "Meta+F9") } });
    EXPECT_TRUE(hears("3 Meta+F9"));
    portal.activate("/elsewhere", "toggle-panel");
    portal.activate(portal.session, "another");
    portal.activate(portal.session, "toggle-panel");
    portal.desktop.send(path, shortcuts, "ShortcutsChanged",
        { QVariant::fromValue(QDBusObjectPath(portal.session)), Portal::bound("toggle-panel", "") });
    EXPECT_TRUE(spinUntil([&] {
        time.runPosted();
        return told.size() > 1;
    }));
    EXPECT_EQ(std::exchange(told, {}), (std::vector<std::string> { "pressed", "3 " }))
        << "pressed once, and then the user took the key away";

    const QString first = portal.session;
    portal.calls.clear();
    EXPECT_TRUE(center.registerHotKey({ 35, ModifierFlag::control | ModifierFlag::option, "p" }));
    EXPECT_TRUE(isAsked("BindShortcuts"));
    EXPECT_EQ(portal.wish, "toggle-panel CTRL+ALT+p");
    EXPECT_NE(portal.session, first) << "what is bound in a session can't be changed";
    portal.respond(0, { { "shortcuts", Portal::bound("toggle-panel", "Ctrl+Alt+P") } });
    EXPECT_TRUE(hears("3 Ctrl+Alt+P"));
    portal.activate(first, "toggle-panel");
    center.unregisterHotKey();
    EXPECT_TRUE(isAsked("Close"));
    portal.activate(portal.session, "toggle-panel");
    EXPECT_EQ(stands(), "0 ");
}

TEST_F(HotKeyCenterUnderWayland, ARefusalComesLaterAndWhatIsNoAnswerCountsAsOne)
{
    startPortal();
    const std::vector<std::pair<unsigned, QVariantMap>> answers { { 1, {} }, { 2, {} }, { 0, {} },
        { 0, { { "shortcuts", Portal::bound("another", "x") } } }, { 0, { { "shortcuts", "toggle-panel" } } },
        { 1, { { "shortcuts", Portal::bound("toggle-panel", "x") } } } };
    for (const auto& [code, results] : answers) {
        EXPECT_TRUE(center.registerHotKey(wish));
        EXPECT_TRUE(isAsked("BindShortcuts"));
        portal.respond(code, results);
        EXPECT_TRUE(hears("refused 1")) << code;
        EXPECT_EQ(stands(), "0 ");
    }
    portal.sessions = false;
    for (const auto& [code, results] :
        std::vector<std::pair<unsigned, QVariantMap>> { { 1, { { "session_handle", "/session" } } },
            { 0, {} }, { 0, { { "session_handle", "session" } } } }) {
        EXPECT_TRUE(center.registerHotKey(wish));
        EXPECT_TRUE(isAsked("CreateSession"));
        portal.respond(code, results);
        EXPECT_TRUE(hears("refused 1")) << code;
    }
    EXPECT_TRUE(center.registerHotKey(wish));
    EXPECT_TRUE(isAsked("CreateSession"));
    const QString first = portal.request;
    EXPECT_TRUE(center.registerHotKey(wish));
    EXPECT_TRUE(isAsked("CreateSession"));
    const QString second = std::exchange(portal.request, first);
    portal.respond(1, {});
    portal.request = second;
    portal.respond(0, { { "session_handle", portal.session } });
    EXPECT_TRUE(isAsked("BindShortcuts")) << "the answer to an earlier wish is void";
    EXPECT_EQ(stands(), asked);
}

TEST_F(HotKeyCenterUnderWayland, WithoutAPortalItSaysSoAndAsksTheOneThatComes)
{
    EXPECT_TRUE(center.registerHotKey(wish));
    EXPECT_TRUE(hears("refused 2"));
    portal.known = false;
    startPortal();
    EXPECT_TRUE(hears("refused 2")) << "one without shortcuts";
    portal.desktop.bus.unregisterService(service);
    EXPECT_TRUE(hears("refused 2"));
    portal.known = true;
    startPortal();
    EXPECT_TRUE(isAsked("BindShortcuts"));
    portal.respond(0, { { "shortcuts", Portal::bound("toggle-panel", "F9") } });
    EXPECT_TRUE(hears("3 F9"));
}

TEST(HotKeyCenter, WithoutADisplayAndWithoutWaylandThereIsNobodyToAsk)
{
    VirtualTime time;
    QtHotKeyCenter center(time);
    EXPECT_FALSE(center.registerHotKey({ 46, ModifierFlag::option, "m" }));
    EXPECT_EQ(center.refusal(), HotKeyRefusal::unavailable);
    center.unregisterHotKey();
}

TEST(QtKeyMonitor, AKeyIsToldWithItsPlaceAndWhatItTypesAndATakenOneReachesNoView)
{
    struct View final : QWindow {
        void keyPressEvent(QKeyEvent*) override { ++keys; }
        int keys = 0;
    } window;
    std::vector<std::string> told;
    bool take = true;
    std::unique_ptr<Observation> monitor = std::make_unique<QtKeyMonitor>([&](const KeyDown& key) {
        told.push_back(std::to_string(key.keyCode) + " " + std::to_string(key.modifierFlags) + " "
            + key.characters.value_or("-"));
        if (key.keyCode == 53)
            monitor.reset();
        return take;
    });
    const auto press
        = [&](int key, quint32 scanCode, Qt::KeyboardModifiers modifiers = {}, bool again = false) {
              QKeyEvent event(QEvent::KeyPress, key, modifiers, scanCode, 0, 0, {}, again);
              QCoreApplication::sendEvent(&window, &event);
          };
    press(Qt::Key_M, 58, Qt::AltModifier | Qt::MetaModifier);
    press(Qt::Key_Exclam, 10, Qt::ControlModifier | Qt::ShiftModifier | Qt::KeypadModifier);
    press(0x42c, 58); // a Cyrillic letter
    press(Qt::Key_Super_L, 133, Qt::MetaModifier);
    press(Qt::Key_Left, 113);
    press(Qt::Key_A, 250);
    EXPECT_EQ(told,
        (std::vector<std::string> {
            "46 1572864 M", "18 393216 !", "46 0 Ь", "65535 1048576 -", "123 0 -", "65535 0 -" }));
    press(Qt::Key_M, 58, Qt::AltModifier, true);
    EXPECT_EQ(told.size(), 6U) << "held down";
    EXPECT_EQ(window.keys, 0);
    take = false;
    press(Qt::Key_M, 58);
    EXPECT_EQ(window.keys, 1);
    press(Qt::Key_Escape, 9);
    press(Qt::Key_M, 58);
    EXPECT_EQ(told.size(), 8U) << "it ended inside of its own job";
}

} // namespace
