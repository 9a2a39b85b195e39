// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MainQueue.h"

#include <memory>

class QSocketNotifier;

namespace platform {

/// Turns SIGTERM, SIGINT and SIGHUP into one job on the main thread, so that the program ends in order. Make
/// it before any other thread starts: threads inherit the mask that keeps the signals for it.
class QtTerminationSignals {
public:
    explicit QtTerminationSignals(Job onSignal);
    QtTerminationSignals(const QtTerminationSignals&) = delete;
    QtTerminationSignals& operator=(const QtTerminationSignals&) = delete;
    ~QtTerminationSignals();

private:
    int fd_ = -1;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace platform
