// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtRunLoop.h"

#include <QTimer>

#include <utility>

namespace platform {

namespace {

class QtTimer final : public Timer {
public:
    QtTimer(Seconds period, Job job)
        : timer_(new QTimer)
    {
        QObject::connect(timer_, &QTimer::timeout, timer_, std::move(job));
        timer_->setTimerType(Qt::CoarseTimer);
        timer_->start(std::chrono::ceil<std::chrono::milliseconds>(period));
    }

    QtTimer(const QtTimer&) = delete;
    QtTimer& operator=(const QtTimer&) = delete;

    /// The job that runs may be what destroys the timer, so the toolkit's object goes in a later turn.
    ~QtTimer() override
    {
        timer_->stop();
        timer_->disconnect();
        timer_->deleteLater();
    }

private:
    QTimer* timer_;
};

} // namespace

std::unique_ptr<Timer> QtRunLoop::scheduleRepeating(Seconds period, Job job)
{
    return std::make_unique<QtTimer>(period, std::move(job));
}

} // namespace platform
