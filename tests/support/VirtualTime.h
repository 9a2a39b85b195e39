// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Clock.h"
#include "platform/MainQueue.h"
#include "platform/Timer.h"

#include "support/CallLog.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include <fmt/format.h>

/// The main thread's clock, queue and timers in a time that only the test moves. Due work runs in the order
/// of its instants; what falls on one instant runs in the order in which it was made.
class VirtualTime final : public platform::Clock,
                          public platform::MainQueue,
                          public platform::RunLoop,
                          public Logged {
public:
    using Instant = platform::Instant;
    using Seconds = platform::Seconds;

    [[nodiscard]] Instant now() const override { return now_; }

    void post(platform::Job job) override { posted_.push_back(std::move(job)); }

    void postAfter(Seconds delay, platform::Job job) override
    {
        note(fmt::format("plans for {} s", delay.count()));
        due_.emplace(later(delay), std::move(job));
    }

    [[nodiscard]] std::unique_ptr<platform::Timer> scheduleRepeating(
        Seconds period, platform::Job job) override
    {
        note(fmt::format("timer of {} s", period.count()));
        auto timer = std::make_unique<VirtualTimer>(log(), period);
        timer->job = std::make_shared<platform::Job>(std::move(job));
        std::erase_if(made_, [](const auto& gone) { return gone.expired(); });
        made_.emplace_back(timer->job);
        plan(period, timer->job);
        return timer;
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

    /// How many timers run.
    [[nodiscard]] std::ptrdiff_t timers() const
    {
        return std::ranges::count_if(made_, [](const auto& job) { return !job.expired(); });
    }

    /// How much waits for its time.
    [[nodiscard]] std::size_t waiting() const { return due_.size(); }

private:
    struct VirtualTimer final : platform::Timer {
        VirtualTimer(CallLog* log, Seconds period)
            : end(log, fmt::format("ends the timer of {} s", period.count()))
        {
        }

        NotesEnd end;
        std::shared_ptr<platform::Job> job; ///< held by nobody else but while it runs
    };

    void plan(Seconds period, const std::weak_ptr<platform::Job>& timer)
    {
        due_.emplace(later(period), [this, period, timer] {
            const auto job = timer.lock();
            if (!job)
                return;
            plan(period, timer);
            (*job)();
        });
    }

    [[nodiscard]] Instant later(Seconds by) const
    {
        return now_ + std::chrono::duration_cast<Instant::duration>(by);
    }

    Instant now_ { std::chrono::seconds(1'700'000'000) };
    std::deque<platform::Job> posted_;
    std::multimap<Instant, platform::Job> due_;
    std::vector<std::weak_ptr<platform::Job>> made_;
};
