// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtTerminationSignals.h"

#include <QSocketNotifier>

#include <csignal>
#include <utility>

#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace platform {

QtTerminationSignals::QtTerminationSignals(Job onSignal)
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : { SIGTERM, SIGINT, SIGHUP })
        sigaddset(&signals, number);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    fd_ = ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    if (fd_ < 0)
        return;
    notifier_ = std::make_unique<QSocketNotifier>(fd_, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this, job = std::move(onSignal)] {
        signalfd_siginfo info {};
        while (::read(fd_, &info, sizeof info) == static_cast<ssize_t>(sizeof info)) { }
        job();
    });
}

QtTerminationSignals::~QtTerminationSignals()
{
    notifier_.reset();
    if (fd_ >= 0)
        ::close(fd_);
}

} // namespace platform
