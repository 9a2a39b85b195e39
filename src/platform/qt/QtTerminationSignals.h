// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MainQueue.h"

#include <memory>

class QSocketNotifier;

namespace platform {

/// Turns SIGTERM, SIGINT and SIGHUP into one job on the main thread, so that the program ends in order.
class QtTerminationSignals {
public:
    /// Keeps the signals back from the calling thread and from those that it starts from here on, until one
    /// of these takes them. Call it before any other thread starts.
    static void keepBack();

    explicit QtTerminationSignals(Job onSignal);
    QtTerminationSignals(const QtTerminationSignals&) = delete;
    QtTerminationSignals& operator=(const QtTerminationSignals&) = delete;
    ~QtTerminationSignals();

private:
    int fd_ = -1;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace platform
