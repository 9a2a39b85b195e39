// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtMainQueue.h"

#include <QSocketNotifier>
#include <QTimer>

#include <utility>

namespace platform {

QtMainQueue::QtMainQueue() = default;

QtMainQueue::~QtMainQueue() = default;

void QtMainQueue::attach()
{
    notifier_ = std::make_unique<QSocketNotifier>(jobs_.fd(), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this] { jobs_.runNext(); });
}

void QtMainQueue::detach() { notifier_.reset(); }

void QtMainQueue::post(Job job) { jobs_.post(std::move(job)); }

void QtMainQueue::postAfter(Seconds delay, Job job)
{
    QTimer::singleShot(std::chrono::ceil<std::chrono::milliseconds>(delay), Qt::PreciseTimer, std::move(job));
}

} // namespace platform
