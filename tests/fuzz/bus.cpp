// SPDX-License-Identifier: Apache-2.0
/// Calls and signals that anybody on the session bus may send: each call is answered, only rows that can be
/// chosen act, what is opened stays in its bounds, and the menu is the same afterwards.
#include "platform/qt/DBusMenuObject.h"
#include "platform/qt/QtDistributedNotificationCenter.h"
#include "platform/qt/QtUrlEvents.h"
#include "platform/qt/StatusNotifierObject.h"

#include "fuzz/BusValues.h"
#include "support/VirtualTime.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace platform;

constexpr const char* program = "dev.quent.ostrel";
constexpr const char* testbed = "dev.quent.ostrel.testbed";
constexpr const char* properties = "org.freedesktop.DBus.Properties";
constexpr std::size_t longestText = 4096;
constexpr std::size_t mostAddresses = 16;
constexpr int mostCalls = 8;

/// A call that is known, and the types of its arguments: a letter each, small ones as the bus has them, large
/// ones for lists of those, M for a dictionary, E for a menu's events.
struct Known {
    const char* path;
    const char* interface;
    const char* member;
    const char* types;
};
constexpr std::array known {
    Known { StatusNotifierObject::menuPath, DBusMenuObject::interface, "GetLayout", "iiS" },
    Known { StatusNotifierObject::menuPath, DBusMenuObject::interface, "GetGroupProperties", "IS" },
    Known { StatusNotifierObject::menuPath, DBusMenuObject::interface, "GetProperty", "is" },
    Known { StatusNotifierObject::menuPath, DBusMenuObject::interface, "Event", "isvu" },
    Known { StatusNotifierObject::menuPath, DBusMenuObject::interface, "EventGroup", "E" },
    Known { StatusNotifierObject::menuPath, DBusMenuObject::interface, "AboutToShow", "i" },
    Known { StatusNotifierObject::menuPath, DBusMenuObject::interface, "AboutToShowGroup", "I" },
    Known { StatusNotifierObject::menuPath, properties, "Get", "ss" },
    Known { StatusNotifierObject::path, properties, "GetAll", "s" },
    Known { StatusNotifierObject::path, properties, "Set", "ssv" },
    Known { StatusNotifierObject::path, StatusNotifierObject::interface, "Activate", "ii" },
    Known { StatusNotifierObject::path, StatusNotifierObject::interface, "ContextMenu", "ii" },
    Known { StatusNotifierObject::path, StatusNotifierObject::interface, "Scroll", "is" },
    Known { "/dev/quent/ostrel", "org.freedesktop.Application", "Activate", "M" },
    Known { "/dev/quent/ostrel", "org.freedesktop.Application", "Open", "SM" },
    Known { "/dev/quent/ostrel", "org.freedesktop.Application", "ActivateAction", "sLM" },
};

QVariant valueOf(char type, FuzzBytes& bytes)
{
    switch (type) {
    case 'i':
        return bytes.number();
    case 'u':
        return static_cast<uint>(bytes.number());
    case 's':
        return bytes.text();
    case 'v':
        return QVariant::fromValue(QDBusVariant(anyValue(bytes)));
    case 'I':
        return QVariant::fromValue(bytes.numbers(20));
    case 'S': {
        QStringList texts;
        for (int count = bytes.next() % 24; count > 0; --count)
            texts.push_back(bytes.text().repeated(bytes.next() % 3 == 2 ? 80 : 1));
        return texts;
    }
    case 'E':
        return QVariant::fromValue(anyEvents(bytes, 8, 1));
    case 'L':
        return QVariantList { anyValue(bytes, 1) };
    default:
        return anyMap(bytes, 2);
    }
}

/// What the program offers on the bus, and another program there.
class Bus {
public:
    Bus()
        : item_(own_, program, "OSTREL", "/none", [](const StatusNotifierObject::Press&) {})
        , menu_(time_, StatusNotifierObject::menuPath)
        , other_(QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), "caller"))
    {
        menu_.setBuilder([this] { return rows(); });
        own_.registerVirtualObject(StatusNotifierObject::path, &item_);
        own_.registerVirtualObject(StatusNotifierObject::menuPath, &menu_);
        item_.setOffered(true);
        const auto keep = [this](const std::string& text) { asked_.push_back(text); };
        urls_.start({ .open = keep, .reopen = [] {}, .action = keep });
        told_ = notifications_.observe(testbed, [](const UserInfo&) {});
        check(spinUntil([this] { return !other_.interface()->serviceOwner(program).value().isEmpty(); }));
    }
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;
    ~Bus() { QDBusConnection::disconnectFromBus("caller"); }

    void run(FuzzBytes bytes)
    {
        asked_.clear();
        QList<QDBusPendingCall> pending;
        std::size_t most = 0;
        for (int calls = 0; calls < mostCalls && !bytes.empty(); ++calls) {
            const QDBusMessage message = anyMessage(bytes);
            most += message.member() == "Open" ? mostAddresses : message.member() == "ActivateAction" ? 1 : 0;
            if (message.type() == QDBusMessage::SignalMessage)
                other_.send(message);
            else
                pending.push_back(other_.asyncCall(message));
        }
        // Behind them all.
        QDBusMessage layout = call(known[0]);
        layout << 0 << -1 << QStringList();
        pending.push_back(other_.asyncCall(layout));
        check(spinUntil([&pending] {
            return std::ranges::all_of(pending, [](const auto& one) { return one.isFinished(); });
        }));
        for (const QDBusPendingCall& one : pending)
            check(one.error().type() != QDBusError::NoReply && one.error().type() != QDBusError::TimedOut);
        check(pending.back().reply().arguments().size() == 2);
        time_.runPosted();
        check(asked_.size() <= most);
        for (const std::string& text : asked_)
            check(text.size() <= longestText);
        check(greyActs_ == 0);
    }

private:
    [[nodiscard]] Menu rows()
    {
        Menu menu(4);
        menu[0].title = "open _panel";
        menu[0].action = [] {};
        menu[1].separator = true;
        menu[1].action = [this] { ++greyActs_; };
        menu[2].title = "more";
        menu[2].submenu = Menu(2, menu[0]);
        menu[2].submenu[1].checked = true;
        menu[3].title = "grey";
        return menu;
    }

    [[nodiscard]] static QDBusMessage call(const Known& about)
    {
        return QDBusMessage::createMethodCall(
            QDBusConnection::sessionBus().baseService(), about.path, about.interface, about.member);
    }

    [[nodiscard]] static QDBusMessage anyMessage(FuzzBytes& bytes)
    {
        const int choice = bytes.next();
        if (choice >= 224) {
            QDBusMessage signal = QDBusMessage::createSignal(
                "/dev/quent/ostrel", "dev.quent.ostrel.DistributedNotification", "Posted");
            signal << (choice % 2 == 0 ? QString(testbed) : bytes.text());
            return choice % 4 < 2 ? signal << anyMap(bytes, 2, { "action" }) : signal << anyValue(bytes);
        }
        const Known& about = known[static_cast<std::size_t>(choice) % known.size()];
        QDBusMessage message = call(about);
        const bool wrong = choice >= 192;
        for (const char* type = about.types; *type != '\0'; ++type)
            message << (wrong ? anyValue(bytes) : valueOf(*type, bytes));
        return message;
    }

    QDBusConnection own_ = QDBusConnection::sessionBus();
    VirtualTime time_;
    StatusNotifierObject item_;
    DBusMenuObject menu_;
    QtUrlEvents urls_ { time_, program };
    QtDistributedNotificationCenter notifications_ { time_ };
    std::unique_ptr<Observation> told_;
    std::vector<std::string> asked_;
    int greyActs_ = 0;
    QDBusConnection other_;
};

} // namespace

void runOn(std::string_view text) { onBus<Bus>().run(FuzzBytes(text)); }
