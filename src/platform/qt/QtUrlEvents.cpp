// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtUrlEvents.h"

#include "platform/qt/BusObject.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QDeadlineTimer>
#include <QStringList>

namespace platform {

namespace {

using namespace std::chrono_literals;

constexpr const char* interface = "org.freedesktop.Application";

constexpr auto handOverLimit = 1000ms;
constexpr auto ownerStep = 10ms;
/// More than anybody opens at once, longer than any address or action of ours.
constexpr qsizetype mostAddresses = 16;
constexpr qsizetype longestText = 4096;
/// DBUS_NAME_FLAG_DO_NOT_QUEUE. Nor does the holder let others replace it.
constexpr unsigned withoutQueueing = 4;

/// A call of the bus itself.
QDBusMessage busCall(const char* member, const QVariantList& arguments)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", member);
    call.setArguments(arguments);
    return call;
}

QString pathOf(QString name) { return "/" + name.replace('.', '/').replace('-', '_'); }

/// The object that the desktop calls. Each call is answered at once.
class ApplicationObject final : public BusObject {
public:
    ApplicationObject(MainQueue& queue, DesktopRequests handlers)
        : BusObject(interface)
        , queue_(queue)
        , handlers_(std::make_shared<const DesktopRequests>(std::move(handlers)))
    {
    }

    [[nodiscard]] QString introspect(const QString&) const override
    {
        return R"xml(<interface name="org.freedesktop.Application">
  <method name="Activate">
    <arg name="platform_data" type="a{sv}" direction="in"/>
  </method>
  <method name="Open">
    <arg name="uris" type="as" direction="in"/>
    <arg name="platform_data" type="a{sv}" direction="in"/>
  </method>
  <method name="ActivateAction">
    <arg name="action_name" type="s" direction="in"/>
    <arg name="parameter" type="av" direction="in"/>
    <arg name="platform_data" type="a{sv}" direction="in"/>
  </method>
</interface>
)xml";
    }

private:
    [[nodiscard]] std::optional<QDBusMessage> answer(
        const QDBusMessage& message, const QString& call, const QDBusConnection&) override
    {
        if (call == "Activate(a{sv})")
            later([](const DesktopRequests& handlers) { handlers.reopen(); });
        else if (call == "Open(asa{sv})")
            hand(message.arguments()[0].toStringList().mid(0, mostAddresses), &DesktopRequests::open);
        else if (call == "ActivateAction(sava{sv})")
            hand({ message.arguments()[0].toString() }, &DesktopRequests::action);
        else
            return std::nullopt;
        return message.createReply();
    }

    void hand(const QStringList& texts, std::function<void(const std::string&)> DesktopRequests::*handler)
    {
        for (const QString& text : texts)
            if (const QByteArray bytes = text.toUtf8(); bytes.size() <= longestText)
                later([handler, word = bytes.toStdString()](
                          const DesktopRequests& handlers) { (handlers.*handler)(word); });
    }

    template <typename Call>
    void later(Call call)
    {
        queue_.post([weak = std::weak_ptr(handlers_), call = std::move(call)] {
            if (const auto handlers = weak.lock())
                call(*handlers);
        });
    }

    MainQueue& queue_;
    std::shared_ptr<const DesktopRequests> handlers_;
};

} // namespace

/// The object with the name, for as long as this lives and nobody else has it.
class QtUrlEvents::Listener {
public:
    Listener(MainQueue& queue, const QString& name, DesktopRequests handlers)
        : bus_(QDBusConnection::sessionBus())
        , name_(name)
        , object_(queue, std::move(handlers))
        , watcher_(name, bus_, QDBusServiceWatcher::WatchForOwnerChange)
    {
        if (!bus_.isConnected())
            return;
        bus_.registerVirtualObject(pathOf(name_), &object_);
        QObject::connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, &watcher_,
            [this](const QString&, const QString&, const QString& owner) {
                if (owner.isEmpty())
                    requestName();
            });
        requestName();
    }

    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    ~Listener()
    {
        bus_.unregisterObject(pathOf(name_));
        bus_.send(busCall("ReleaseName", { name_ }));
    }

private:
    /// Whether it was given needs no look: when not, its owner's end is heard of.
    void requestName() { bus_.send(busCall("RequestName", { name_, withoutQueueing })); }

    QDBusConnection bus_;
    QString name_;
    ApplicationObject object_;
    QDBusServiceWatcher watcher_;
};

QtUrlEvents::QtUrlEvents(MainQueue& queue, const std::string& identifier)
    : queue_(queue)
    , name_(QString::fromStdString(identifier))
{
}

QtUrlEvents::~QtUrlEvents() = default;

void QtUrlEvents::start(DesktopRequests handlers)
{
    listener_ = std::make_unique<Listener>(queue_, name_, std::move(handlers));
}

void QtUrlEvents::stop() { listener_.reset(); }

bool QtUrlEvents::handOver(const std::vector<std::string>& urls)
{
    listener_.reset();
    const QDBusConnection bus = QDBusConnection::sessionBus();
    const QDeadlineTimer limit { handOverLimit };
    const auto ask = [&](const QDBusMessage& call) {
        return bus.call(call, QDBus::Block, static_cast<int>(std::max<qint64>(limit.remainingTime(), 1)));
    };
    QDBusMessage owner;
    // An elder that is still starting has no name yet. No loop runs here that could be told of its coming.
    while (owner.type() != QDBusMessage::ReplyMessage) {
        if (!bus.isConnected() || limit.hasExpired())
            return false;
        if (owner.type() == QDBusMessage::ErrorMessage)
            std::this_thread::sleep_for(ownerStep);
        owner = ask(busCall("GetNameOwner", { name_ }));
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        owner.arguments().value(0).toString(), pathOf(name_), interface, urls.empty() ? "Activate" : "Open");
    QStringList addresses;
    for (const std::string& url : urls)
        addresses.push_back(QString::fromStdString(url));
    if (!urls.empty())
        call << addresses;
    call << QVariantMap();
    return ask(call).type() == QDBusMessage::ReplyMessage;
}

} // namespace platform
