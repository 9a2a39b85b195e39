// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Clock.h"
#include "platform/MainQueue.h"
#include "platform/Timer.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <utility>

/// The main thread's clock, queue and timers in a time that only the test moves. Due work runs in the order
/// of its instants; what falls on one instant runs in the order in which it was made.
class VirtualTime final : public platform::Clock, public platform::MainQueue, public platform::RunLoop {
public:
    using Instant = platform::Instant;
    using Seconds = platform::Seconds;

    VirtualTime()
        : now_(std::chrono::seconds(1'700'000'000))
    {
    }

    [[nodiscard]] Instant now() const override { return now_; }

    void post(platform::Job job) override { posted_.push_back(std::move(job)); }

    void postAfter(Seconds delay, platform::Job job) override { due_.emplace(later(delay), std::move(job)); }

    [[nodiscard]] std::unique_ptr<platform::Timer> scheduleRepeating(
        Seconds period, platform::Job job) override
    {
        auto running = std::make_shared<Repeating>(Repeating { period, std::move(job) });
        plan(running);
        ++timers_;
        return std::make_unique<VirtualTimer>(*this, running);
    }

    /// Runs what was posted, and what that posts, until nothing is left.
    void runPosted()
    {
        while (!posted_.empty()) {
            const platform::Job job = std::move(posted_.front());
            posted_.pop_front();
            job();
        }
    }

    /// Moves the time on, running all that falls due meanwhile.
    void advance(Seconds by)
    {
        const Instant end = later(by);
        runPosted();
        while (!due_.empty() && due_.begin()->first <= end) {
            auto next = due_.extract(due_.begin());
            now_ = std::max(now_, next.key());
            next.mapped()();
            runPosted();
        }
        now_ = end;
    }

    /// Moves the clock alone, as when the machine sleeps or the user sets it.
    void jump(Seconds by) { now_ = later(by); }

    [[nodiscard]] int timers() const { return timers_; }

private:
    struct Repeating {
        Seconds period;
        platform::Job job;
        bool alive = true;
    };

    class VirtualTimer final : public platform::Timer {
    public:
        VirtualTimer(VirtualTime& time, std::shared_ptr<Repeating> running)
            : time_(time)
            , running_(std::move(running))
        {
        }
        ~VirtualTimer() override
        {
            running_->alive = false;
            --time_.timers_;
        }

    private:
        VirtualTime& time_;
        std::shared_ptr<Repeating> running_;
    };

    void plan(const std::shared_ptr<Repeating>& running)
    {
        due_.emplace(later(running->period), [this, running] {
            if (!running->alive)
                return;
            plan(running);
            running->job();
        });
    }

    [[nodiscard]] Instant later(Seconds by) const
    {
        return now_ + std::chrono::duration_cast<Instant::duration>(by);
    }

    Instant now_;
    std::deque<platform::Job> posted_;
    std::multimap<Instant, platform::Job> due_;
    int timers_ = 0;
};
