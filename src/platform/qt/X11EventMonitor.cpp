// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/X11EventMonitor.h"

#include "platform/qt/ObserverList.h"
#include "platform/qt/QtKeyMonitor.h"
#include "platform/qt/X11PressWatch.h"
#include "platform/qt/XcbEventFilter.h"

#include <optional>
#include <utility>

namespace platform {

class X11EventMonitor::Watch {
public:
    Watch(MainQueue& queue, xcb_connection_t* connection)
        : queue_(queue)
        , presses_(connection)
    {
    }

    [[nodiscard]] std::unique_ptr<Observation> observe(Job pressed, Job released)
    {
        if (!filter_) {
            filter_.emplace([this](const xcb_generic_event_t& event) {
                if (presses_.handle(event))
                    observers_.tell(queue_);
            });
            presses_.start();
        }
        return observers_.add(std::move(pressed), std::move(released));
    }

    void release()
    {
        if (!observers_.isEmpty() || !toolkitXConnection())
            return;
        presses_.stop();
        filter_.reset();
    }

private:
    MainQueue& queue_;
    X11PressWatch presses_;
    ObserverList observers_;
    std::optional<XcbEventFilter> filter_; ///< only while somebody observes
};

X11EventMonitor::X11EventMonitor(MainQueue& queue)
    : queue_(queue)
{
}

X11EventMonitor::~X11EventMonitor() = default;

std::unique_ptr<Observation> X11EventMonitor::monitorMouseDown(Job pressed)
{
    if (!watch_) {
        xcb_connection_t* const connection = toolkitXConnection();
        if (!X11PressWatch::seesAll(connection))
            return nullptr;
        watch_ = std::make_shared<Watch>(queue_, connection);
    }
    return watch_->observe(std::move(pressed), [weak = std::weak_ptr(watch_)] {
        if (const auto watch = weak.lock())
            watch->release();
    });
}

std::unique_ptr<Observation> X11EventMonitor::monitorKeyDown(std::function<bool(const KeyDown&)> take)
{
    return std::make_unique<QtKeyMonitor>(std::move(take));
}

} // namespace platform
