// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtWorkspace.h"

#include "platform/qt/QtMainQueue.h"
#include "platform/qt/XSettings.h"
#include "platform/qt/XSettingsWatch.h"

#include "platform/qt/DisplayBench.h"
#include "platform/qt/OtherProgram.h"

#include <QDBusError>
#include <QDBusVariant>
#include <QDBusVirtualObject>

#include <gtest/gtest.h>

namespace {

using namespace platform;
using namespace std::string_view_literals;
/// A text, a colour and animations switched off or on, as a settings manager writes them.
constexpr std::string_view littleOff = "\0\0\0\0\7\0\0\0\3\0\0\0"
                                       "\1\0\5\0Net/A\0\0\0\1\0\0\0\3\0\0\0abc\0"
                                       "\2\0\1\0c\0\0\0\1\0\0\0\1\2\3\4\5\6\7\10"
                                       "\0\0\24\0Gtk/EnableAnimations\1\0\0\0\0\0\0\0"sv,
                           bigOn = "\1\0\0\0\0\0\0\7\0\0\0\2"
                                   "\1\0\0\5Net/A\0\0\0\0\0\0\1\0\0\0\3abc\0"
                                   "\0\0\0\24Gtk/EnableAnimations\0\0\0\1\0\0\0\1"sv;

std::optional<std::int32_t> animationsIn(
    std::string_view text, std::string_view name = "Gtk/EnableAnimations")
{
    // A copy that ends where the text does, so that the sanitizer sees a step too far.
    const std::vector<std::uint8_t> bytes(text.begin(), text.end());
    return xsettingsInteger(bytes, name);
}

TEST(XSettings, ANumberIsReadInEitherByteOrderAndOnlyFromWholeSoundSettings)
{
    EXPECT_EQ(animationsIn(littleOff), 0);
    EXPECT_EQ(animationsIn(bigOn), 1);
    EXPECT_EQ(animationsIn(littleOff, "Net/A"), std::nullopt) << "that is a text";
    for (const std::string_view whole : { littleOff, bigOn })
        for (std::size_t size = 0; size < whole.size(); ++size)
            EXPECT_EQ(animationsIn(whole.substr(0, size)), std::nullopt) << size;
    for (const auto& [place, value, what] : {
             std::tuple { 0U, '\2', "no byte order" },
             { 11U, '\177', "more settings than bytes" },
             { 12U, '\3', "no such kind" },
             { 15U, '\177', "a name that leaves the bytes" },
             { 31U, '\177', "a text that leaves the bytes" },
         }) {
        std::string bytes(littleOff);
        bytes[place] = value;
        EXPECT_EQ(animationsIn(bytes), std::nullopt) << what;
    }
}

using XSettingsOnADisplay = DisplayBench;

TEST_F(XSettingsOnADisplay, TheManagerIsFollowedFromItsComingToItsEnd)
{
    XSettingsWatch watch(own.get());
    const auto now = [&] {
        settle([&](const xcb_generic_event_t& event) { watch.handle(event); });
        return watch.animations();
    };
    EXPECT_EQ(now(), std::nullopt);

    const auto atoms = internAtoms(other.get(), { "_XSETTINGS_S0", "_XSETTINGS_SETTINGS", "MANAGER" });
    const xcb_window_t root = rootWindow(other.get()), manager = makeWindow(other.get(), { 0, 0, 1, 1 });
    const auto write = [&](std::string_view bytes) {
        xcb_change_property(other.get(), XCB_PROP_MODE_REPLACE, manager, atoms[1], atoms[1], 8,
            static_cast<std::uint32_t>(bytes.size()), bytes.data());
    };
    xcb_set_selection_owner(other.get(), manager, atoms[0], XCB_CURRENT_TIME);
    write(littleOff);
    xcb_client_message_event_t announcement { .response_type = XCB_CLIENT_MESSAGE,
        .format = 32,
        .window = root,
        .type = atoms[2],
        .data = { .data32 = { XCB_CURRENT_TIME, atoms[0], manager } } };
    xcb_send_event(
        other.get(), 0, root, XCB_EVENT_MASK_STRUCTURE_NOTIFY, reinterpret_cast<const char*>(&announcement));
    EXPECT_EQ(now(), false);
    EXPECT_EQ(XSettingsWatch(own.get()).animations(), false) << "one that was there before";
    write(bigOn);
    EXPECT_EQ(now(), true);
    write(bigOn.substr(0, 40));
    EXPECT_EQ(now(), std::nullopt);
    write(littleOff);
    EXPECT_EQ(now(), false);
    xcb_destroy_window(other.get(), manager);
    EXPECT_EQ(now(), std::nullopt);
}

TEST(ReduceMotion, TheDisplaysAnimationsCountOnlyWhereThePortalHasNoWordOfItsOwn)
{
    EXPECT_TRUE(wantsReducedMotion({ .portalAnimations = true, .displayAnimations = false }));
    EXPECT_FALSE(wantsReducedMotion({ .displayAnimations = true }));
    EXPECT_FALSE(wantsReducedMotion({ .reducedMotion = 0, .displayAnimations = false }));
}

/// The portal's settings: newer ones know ReadOne.
class Portal final : public QDBusVirtualObject {
public:
    static constexpr const char* service = "org.freedesktop.portal.Desktop";
    static constexpr const char* path = "/org/freedesktop/portal/desktop";
    static constexpr const char* interface = "org.freedesktop.portal.Settings";

    [[nodiscard]] QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        const bool one = message.member() == "ReadOne";
        if (one && !modern)
            return connection.send(message.createErrorReply(QDBusError::UnknownMethod, "no"));
        ++answers;
        const QString key = message.arguments().value(1).toString();
        const QVariant& value = key == "reduced-motion" ? motion
            : key == "enable-animations"                ? animations
                                                        : shapes;
        if (!value.isValid())
            return connection.send(message.createErrorReply("org.freedesktop.portal.Error.NotFound", "no"));
        const QVariant held = QVariant::fromValue(QDBusVariant(value));
        return connection.send(message.createReply(one ? held : QVariant::fromValue(QDBusVariant(held))));
    }

    bool modern = true;
    QVariant motion; ///< none when it isn't valid
    QVariant animations;
    QVariant shapes;
    int answers = 0;
};

class QtWorkspaceOnABus : public testing::Test {
protected:
    QtWorkspaceOnABus()
    {
        queue.attach();
        desktop.bus.registerVirtualObject(Portal::path, &portal);
    }

    void observe()
    {
        observation = workspace.observeDisplayOptions([this] { ++changes; });
    }

    void startPortal() { EXPECT_TRUE(desktop.bus.registerService(Portal::service)); }

    void tell(const char* group, const char* key, const QVariant& value)
    {
        desktop.send(Portal::path, Portal::interface, "SettingChanged",
            { group, key, QVariant::fromValue(QDBusVariant(value)) });
    }

    /// What is so once all settings were asked for that many times, and all messages so far were read.
    bool reduceAfter(int rounds)
    {
        EXPECT_TRUE(spinUntil([&] { return portal.answers >= keys * rounds; }));
        // The portal's answer to this comes after all that it sent before.
        const auto last = QDBusConnection::sessionBus().asyncCall(QDBusMessage::createMethodCall(
            desktop.bus.baseService(), Portal::path, "org.freedesktop.DBus.Peer", "Ping"));
        EXPECT_TRUE(spinUntil([&] { return last.isFinished(); }));
        bool turned = false;
        queue.post([&] { turned = true; });
        EXPECT_TRUE(spinUntil([&] { return turned; }));
        return workspace.accessibilityDisplayShouldReduceMotion();
    }

    static constexpr int keys = 3;

    QtMainQueue queue;
    Portal portal;
    OtherProgram desktop;
    QtWorkspace workspace { queue };
    std::unique_ptr<Observation> observation;
    int changes = 0;
};

TEST_F(QtWorkspaceOnABus, EachNewPortalIsAskedInItsOwnWayAndWrongTypesReadAsUnknown)
{
    startPortal();
    EXPECT_FALSE(reduceAfter(0));
    EXPECT_EQ(portal.answers, 0) << "nobody is asked while nobody wants to know";
    observe();
    const auto another = workspace.observeDisplayOptions([] {});
    int rounds = 1;
    EXPECT_FALSE(reduceAfter(rounds)) << "a portal without either setting";
    tell("org.freedesktop.appearance", "reduced-motion", 1U);
    EXPECT_TRUE(reduceAfter(rounds)) << "which gets one";
    for (const auto& [motion, animations, reduce] :
        std::vector<std::tuple<QVariant, QVariant, bool>> { { 1U, {}, true }, { 0U, false, false },
            { {}, false, true }, { 1, {}, false }, { "1", false, true }, { {}, "false", false },
            { true, 0U, false }, { QVariantList { 1U }, {}, false } })
        for (const bool modern : { true, false }) {
            desktop.bus.unregisterService(Portal::service);
            portal.modern = modern;
            portal.motion = motion;
            portal.animations = animations;
            startPortal();
            EXPECT_EQ(reduceAfter(++rounds), reduce)
                << motion.toString().toStdString() << animations.toString().toStdString() << modern;
        }
    EXPECT_EQ(portal.answers, keys * rounds) << "a portal is asked once";
    EXPECT_EQ(changes, 6);
}

TEST_F(QtWorkspaceOnABus, ChangesAreFollowedAndAPortalMayComeLate)
{
    observe();
    EXPECT_FALSE(reduceAfter(0));
    portal.animations = false;
    startPortal();
    EXPECT_TRUE(reduceAfter(1));
    tell("org.gnome.desktop.interface", "enable-animations", true);
    EXPECT_FALSE(reduceAfter(1));
    tell("org.freedesktop.appearance", "reduced-motion", 1U);
    tell("org.freedesktop.appearance", "color-scheme", 0U);
    tell("org.gnome.desktop.interface", "reduced-motion", 0U);
    EXPECT_TRUE(reduceAfter(1));
    EXPECT_EQ(changes, 3);
    desktop.bus.unregisterService(Portal::service);
    EXPECT_TRUE(reduceAfter(1)) << "a wish outlives the portal that told it";
    observation.reset();
    portal.motion = 0U;
    startPortal();
    EXPECT_FALSE(reduceAfter(2));
    EXPECT_EQ(changes, 3) << "nobody observes";
}

TEST_F(QtWorkspaceOnABus, ShapesBesideColoursAreWantedOnlyWhereThePortalSaysSo)
{
    portal.shapes = true;
    startPortal();
    observe();
    EXPECT_FALSE(reduceAfter(1));
    EXPECT_TRUE(workspace.accessibilityDisplayShouldDifferentiateWithoutColor());
    EXPECT_EQ(changes, 1);
    for (const auto& [value, wanted] : std::vector<std::pair<QVariant, bool>> {
             { false, false }, { true, true }, { 1U, false }, { true, true }, { "true", false } }) {
        tell("org.gnome.desktop.a11y.interface", "show-status-shapes", value);
        EXPECT_FALSE(reduceAfter(1)) << "one wish isn't the other";
        EXPECT_EQ(workspace.accessibilityDisplayShouldDifferentiateWithoutColor(), wanted)
            << value.toString().toStdString();
    }
    EXPECT_EQ(changes, 6);
}

} // namespace
