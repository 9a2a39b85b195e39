// SPDX-License-Identifier: Apache-2.0
#include "panel/RetiredViews.h"

#include <QWidget>

namespace ostrel {

namespace {

/// How often to look whether the question has been answered.
constexpr platform::Seconds alertPause { 0.5 };

} // namespace

RetiredViews::RetiredViews(platform::MainQueue& queue, const platform::Alerts& alerts)
    : queue_(queue)
    , alerts_(alerts)
{
}

RetiredViews::~RetiredViews() = default;

void RetiredViews::retire(QWidget* view)
{
    if (!view)
        return;
    view->hide();
    views_.emplace_back(view);
    if (waiting_)
        return;
    waiting_ = true;
    queue_.post(life_.guard([this] { dropAll(); }));
}

void RetiredViews::dropAll()
{
    if (alerts_.isUp()) {
        queue_.postAfter(alertPause, life_.guard([this] { dropAll(); }));
        return;
    }
    waiting_ = false;
    views_.clear();
}

} // namespace ostrel
