// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace platform {

/// A question that waits for an answer.
struct Alert {
    std::string title;
    std::string text;
    std::vector<std::string> buttons; ///< the first is the default one, the last the one of Escape
    bool critical = false; ///< what it asks for can't be undone
};

/// Questions to the user. Main thread.
class Alerts {
public:
    virtual ~Alerts() = default;

    /// Asks, and gives the place of the chosen button; the last one's when the alert was closed, and when
    /// there is no display to ask on. The loop goes on underneath: never call it from a handler of a view
    /// that the loop may drop.
    [[nodiscard]] virtual std::size_t runModal(const Alert& alert) = 0;

    /// Whether a question waits.
    [[nodiscard]] virtual bool isUp() const = 0;
};

} // namespace platform
