// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtHotKeyCenter.h"

#include "platform/qt/DisplayFacts.h"
#include "platform/qt/PortalShortcuts.h"
#include "platform/qt/X11HotKey.h"
#include "platform/qt/XcbEventFilter.h"

#include <optional>
#include <utility>

#include <QDBusConnection>

namespace platform {

namespace {

constexpr const char* busName = "ostrel-shortcuts";

} // namespace

/// What is registered, and with whom.
class QtHotKeyCenter::Way : public std::enable_shared_from_this<Way> {
public:
    explicit Way(MainQueue& queue)
        : queue_(queue)
    {
    }
    Way(const Way&) = delete;
    Way& operator=(const Way&) = delete;
    ~Way()
    {
        portal_.reset();
        if (ownBus_)
            QDBusConnection::disconnectFromBus(busName);
    }

    void connect(Events events) { events_ = std::move(events); }

    bool registerHotKey(const HotKey& hotKey)
    {
        unregister();
        xcb_connection_t* const connection = toolkitXConnection();
        if (isWaylandDesktop(connection))
            return askPortal(hotKey);
        if (!connection)
            return refuse(HotKeyRefusal::unavailable);
        if (!grab_) {
            grab_.emplace(connection);
            filter_.emplace([this](const xcb_generic_event_t& event) { see(event); });
        }
        if (!grab_->grab(hotKey))
            return refuse(HotKeyRefusal::held);
        standing_.kind = HotKeyStanding::Kind::held;
        return true;
    }

    void unregister()
    {
        standing_ = {};
        if (grab_ && toolkitXConnection())
            grab_->release();
        if (portal_)
            portal_->unbind();
    }

    [[nodiscard]] HotKeyRefusal refusal() const { return refusal_; }
    [[nodiscard]] const HotKeyStanding& standing() const { return standing_; }

private:
    bool refuse(HotKeyRefusal refusal)
    {
        refusal_ = refusal;
        return false;
    }

    bool askPortal(const HotKey& hotKey)
    {
        if (!QDBusConnection::sessionBus().isConnected())
            return refuse(HotKeyRefusal::unavailable);
        standing_.kind = HotKeyStanding::Kind::asked;
        // The start of the program doesn't wait for another connection to the bus.
        later([this, hotKey, asked = ++asked_] {
            if (asked != asked_ || standing_.kind == HotKeyStanding::Kind::none)
                return;
            if (!portal_)
                openPortal();
            portal_->bind(hotKey);
        });
        return true;
    }

    void openPortal()
    {
        ownBus_ = true;
        portal_.emplace(QDBusConnection::connectToBus(QDBusConnection::SessionBus, busName),
            PortalShortcuts::Told { .pressed = [this] { later([this] { events_.pressed(); }); },
                .stands = [this](const HotKeyStanding& standing) { take(standing); },
                .refused = [this](HotKeyRefusal refusal) { lose(refusal); } });
    }

    void take(const HotKeyStanding& standing)
    {
        standing_ = standing;
        later([this] { events_.changed(); });
    }

    void lose(HotKeyRefusal refusal)
    {
        standing_ = {};
        refusal_ = refusal;
        later([this, refusal] { events_.refused(refusal); });
    }

    void see(const xcb_generic_event_t& event)
    {
        switch (grab_->handle(event)) {
        case X11HotKey::Event::pressed:
            return later([this] { events_.pressed(); });
        case X11HotKey::Event::keyboardChanged:
            // A change comes as a flood of events.
            if (!std::exchange(following_, true))
                later([this] { follow(); });
            return;
        case X11HotKey::Event::other:
            return;
        }
    }

    void follow()
    {
        following_ = false;
        if (!grab_->follow())
            lose(HotKeyRefusal::held);
    }

    /// Runs the job in a turn of its own, while somebody listens.
    template <typename Call>
    void later(Call call)
    {
        queue_.post([weak = weak_from_this(), call = std::move(call)] {
            const auto self = weak.lock();
            if (self && self->events_.pressed)
                call();
        });
    }

    MainQueue& queue_;
    Events events_;
    HotKeyStanding standing_;
    HotKeyRefusal refusal_ = HotKeyRefusal::unavailable;
    std::optional<X11HotKey> grab_;
    std::optional<XcbEventFilter> filter_;
    std::optional<PortalShortcuts> portal_;
    bool ownBus_ = false;
    bool following_ = false;
    unsigned asked_ = 0; ///< counts the wishes
};

QtHotKeyCenter::QtHotKeyCenter(MainQueue& queue)
    : way_(std::make_shared<Way>(queue))
{
}

QtHotKeyCenter::~QtHotKeyCenter() = default;

void QtHotKeyCenter::connect(Events events) { way_->connect(std::move(events)); }

bool QtHotKeyCenter::registerHotKey(const HotKey& hotKey) { return way_->registerHotKey(hotKey); }

void QtHotKeyCenter::unregisterHotKey() { way_->unregister(); }

HotKeyRefusal QtHotKeyCenter::refusal() const { return way_->refusal(); }

HotKeyStanding QtHotKeyCenter::standing() const { return way_->standing(); }

std::string QtHotKeyCenter::desktop() const
{
    const std::string name = qEnvironmentVariable("XDG_CURRENT_DESKTOP").toStdString();
    xcb_connection_t* const connection = toolkitXConnection();
    return connection ? name + ":" + windowManagerName(connection) : name;
}

} // namespace platform
