// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace ostrel {

/// Lets a queued job find out that its owner is gone. The owner keeps one as its last member; a job made by
/// `guard` does nothing once the owner was destroyed. Make and run such jobs on the main thread: only there
/// is an owner ever destroyed.
class LifeToken {
public:
    LifeToken() = default;
    LifeToken(const LifeToken&) = delete;
    LifeToken& operator=(const LifeToken&) = delete;
    ~LifeToken() = default;

    /// The job, run only while the owner lives.
    template <typename Call>
    [[nodiscard]] auto guard(Call call) const
    {
        return [weak = std::weak_ptr<const int>(life_), call = std::move(call)](auto&&... arguments) {
            if (!weak.expired())
                call(std::forward<decltype(arguments)>(arguments)...);
        };
    }

private:
    std::shared_ptr<const int> life_ = std::make_shared<const int>(0);
};

} // namespace ostrel
