// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/X11WindowOcclusion.h"

#include "platform/qt/ObserverList.h"
#include "platform/qt/X11CoverTracker.h"
#include "platform/qt/XcbEventFilter.h"

#include <map>
#include <optional>
#include <utility>

namespace platform {

class X11WindowOcclusion::Watch {
public:
    explicit Watch(MainQueue& queue)
        : queue_(queue)
    {
    }

    [[nodiscard]] bool covered(xcb_window_t window) const { return tracker_ && tracker_->covered(window); }

    [[nodiscard]] std::unique_ptr<Observation> observe(xcb_window_t window, Job changed, Job released)
    {
        if (!tracker_)
            if (xcb_connection_t* connection = toolkitXConnection())
                tracker_.emplace(connection);
        if (tracker_) {
            tracker_->watch(window);
            if (!filter_)
                filter_.emplace([this](const xcb_generic_event_t& event) {
                    if (const auto different = tracker_->handle(event))
                        observers_[*different].tell(queue_);
                });
        }
        return observers_[window].add(std::move(changed), std::move(released));
    }

    void release(xcb_window_t window)
    {
        const auto found = observers_.find(window);
        if (found == observers_.end() || !found->second.isEmpty())
            return;
        observers_.erase(found);
        if (tracker_)
            tracker_->forget(window);
        if (observers_.empty())
            filter_.reset();
    }

private:
    MainQueue& queue_;
    std::optional<X11CoverTracker> tracker_;
    std::map<xcb_window_t, ObserverList> observers_;
    std::optional<XcbEventFilter> filter_; ///< only while somebody observes
};

X11WindowOcclusion::X11WindowOcclusion(MainQueue& queue)
    : watch_(std::make_shared<Watch>(queue))
{
}

X11WindowOcclusion::~X11WindowOcclusion() = default;

bool X11WindowOcclusion::covered(WindowHandle window) const
{
    return watch_->covered(static_cast<xcb_window_t>(window));
}

std::unique_ptr<Observation> X11WindowOcclusion::observe(WindowHandle window, Job changed)
{
    const auto number = static_cast<xcb_window_t>(window);
    return watch_->observe(number, std::move(changed), [weak = std::weak_ptr(watch_), number] {
        if (const auto watch = weak.lock())
            watch->release(number);
    });
}

} // namespace platform
