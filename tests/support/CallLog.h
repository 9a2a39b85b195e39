// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

/// What the program asked of its platform, in order, across all fakes that are given it.
struct CallLog {
    void add(std::string call)
    {
        before();
        calls.push_back(std::move(call));
    }

    std::vector<std::string> calls;
    std::function<void()> before = [] {}; ///< called ahead of each
};

/// A fake that writes into a log once it has one.
class Logged {
public:
    void logTo(CallLog& log) { log_ = &log; }

protected:
    void note(std::string call) const
    {
        if (log_)
            log_->add(std::move(call));
    }

    [[nodiscard]] CallLog* log() const { return log_; }

private:
    CallLog* log_ = nullptr;
};

/// Writes into the log as it ends. The log lives longer; the fake needn't.
class NotesEnd {
public:
    NotesEnd(CallLog* log, std::string call)
        : log_(log)
        , call_(std::move(call))
    {
    }
    NotesEnd(const NotesEnd&) = delete;
    NotesEnd& operator=(const NotesEnd&) = delete;
    ~NotesEnd()
    {
        if (log_)
            log_->add(std::move(call_));
    }

private:
    CallLog* log_;
    std::string call_;
};
