// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtWorkspace.h"

#include "platform/qt/ObserverList.h"
#include "platform/qt/PortalSettings.h"
#include "platform/qt/XSettingsWatch.h"
#include "platform/qt/XcbEventFilter.h"

#include <cstddef>
#include <utility>

#include <QDBusConnection>
#include <QDesktopServices>
#include <QMetaType>
#include <QUrl>
#include <QVariant>

namespace platform {

bool wantsReducedMotion(const MotionWishes& wishes)
{
    if (wishes.reducedMotion)
        return *wishes.reducedMotion == 1;
    return !wishes.portalAnimations.value_or(true) || !wishes.displayAnimations.value_or(true);
}

class QtWorkspace::Desktop {
public:
    explicit Desktop(MainQueue& queue)
        : queue_(queue)
    {
    }

    void follow()
    {
        if (xcb_connection_t* connection = toolkitXConnection()) {
            display_.emplace(connection);
            filter_.emplace([this](const xcb_generic_event_t& event) {
                if (display_->handle(event))
                    takeDisplay();
            });
            takeDisplay();
        }
        portal_.emplace(QDBusConnection::sessionBus(),
            std::vector<PortalKey> { { "org.freedesktop.appearance", "reduced-motion" },
                { "org.gnome.desktop.interface", "enable-animations" },
                { "org.gnome.desktop.a11y.interface", "show-status-shapes" } },
            [this](std::size_t place, const QVariant& value) { take(place, value); });
    }

    [[nodiscard]] bool reduceMotion() const { return reduceMotion_; }
    [[nodiscard]] bool differentiateWithoutColor() const { return differentiate_; }
    [[nodiscard]] ObserverList& observers() { return observers_; }

private:
    void take(std::size_t place, const QVariant& value)
    {
        if (place == 0)
            takeReducedMotion(value);
        else if (place == 1)
            takeAnimations(value);
        else
            takeShapes(value);
    }

    // A value of another type than agreed reads as none.
    void takeReducedMotion(const QVariant& value)
    {
        wishes_.reducedMotion.reset();
        if (value.userType() == QMetaType::UInt)
            wishes_.reducedMotion = value.toUInt();
        decide();
    }

    void takeAnimations(const QVariant& value)
    {
        wishes_.portalAnimations.reset();
        if (value.userType() == QMetaType::Bool)
            wishes_.portalAnimations = value.toBool();
        decide();
    }

    void takeShapes(const QVariant& value)
    {
        const bool wanted = value.userType() == QMetaType::Bool && value.toBool();
        if (std::exchange(differentiate_, wanted) != wanted)
            observers_.tell(queue_);
    }

    void takeDisplay()
    {
        wishes_.displayAnimations = display_->animations();
        decide();
    }

    void decide()
    {
        const bool reduce = wantsReducedMotion(wishes_);
        if (std::exchange(reduceMotion_, reduce) != reduce)
            observers_.tell(queue_);
    }

    MainQueue& queue_;
    MotionWishes wishes_;
    bool reduceMotion_ = false;
    bool differentiate_ = false;
    ObserverList observers_;
    std::optional<XSettingsWatch> display_;
    std::optional<XcbEventFilter> filter_;
    std::optional<PortalSettings> portal_;
};

QtWorkspace::QtWorkspace(MainQueue& queue)
    : queue_(queue)
    , desktop_(std::make_shared<Desktop>(queue))
{
}

QtWorkspace::~QtWorkspace() = default;

void QtWorkspace::start()
{
    if (std::exchange(started_, true))
        return;
    queue_.post([weak = std::weak_ptr(desktop_)] {
        if (const auto desktop = weak.lock())
            desktop->follow();
    });
}

bool QtWorkspace::accessibilityDisplayShouldReduceMotion() const { return desktop_->reduceMotion(); }

bool QtWorkspace::accessibilityDisplayShouldDifferentiateWithoutColor() const
{
    return desktop_->differentiateWithoutColor();
}

std::unique_ptr<Observation> QtWorkspace::observeDisplayOptions(Job changed)
{
    start();
    return desktop_->observers().add(std::move(changed));
}

void QtWorkspace::open(const std::string& url)
{
    QDesktopServices::openUrl(QUrl(QString::fromStdString(url)));
}

} // namespace platform
