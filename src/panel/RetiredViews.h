// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/LifeToken.h"
#include "platform/Alerts.h"
#include "platform/MainQueue.h"

#include <memory>
#include <vector>

class QWidget;

namespace ostrel {

/// Views that are off the screen and wait to be destroyed: in a later turn of the loop, since the handler of
/// one of them may be at work, and not while a question to the user is up, since the one who asked may hold
/// on to them. Main thread.
class RetiredViews {
public:
    RetiredViews(platform::MainQueue& queue, const platform::Alerts& alerts);
    RetiredViews(const RetiredViews&) = delete;
    RetiredViews& operator=(const RetiredViews&) = delete;
    ~RetiredViews();

    /// Takes the view over; null is nothing.
    void retire(QWidget* view);

private:
    void dropAll();

    platform::MainQueue& queue_;
    const platform::Alerts& alerts_;
    std::vector<std::unique_ptr<QWidget>> views_;
    bool waiting_ = false;
    LifeToken life_;
};

} // namespace ostrel
