// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MainQueue.h"
#include "platform/linux/EventFdQueue.h"

#include <memory>

class QSocketNotifier;

namespace platform {

/// The main queue on the toolkit's event loop. Jobs posted before `attach` wait for it.
class QtMainQueue final : public MainQueue {
public:
    QtMainQueue();
    QtMainQueue(const QtMainQueue&) = delete;
    QtMainQueue& operator=(const QtMainQueue&) = delete;
    ~QtMainQueue() override;

    /// From here on the loop of the calling thread, the main one, runs the jobs. An application object
    /// exists.
    void attach();
    /// No further job runs; what is posted afterwards is kept and never run.
    void detach();

    void post(Job job) override;
    void postAfter(Seconds delay, Job job) override;

private:
    EventFdQueue jobs_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace platform
