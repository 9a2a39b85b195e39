// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtTerminationSignals.h"

#include <QSocketNotifier>

#include <csignal>
#include <utility>

#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace platform {

namespace {

sigset_t terminationSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : { SIGTERM, SIGINT, SIGHUP })
        sigaddset(&signals, number);
    return signals;
}

} // namespace

void QtTerminationSignals::keepBack()
{
    const sigset_t signals = terminationSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

QtTerminationSignals::QtTerminationSignals(Job onSignal)
{
    keepBack();
    const sigset_t signals = terminationSignals();
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
