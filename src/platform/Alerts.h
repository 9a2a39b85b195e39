// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace platform {

/// A question that waits for an answer.
struct Alert {
    std::string title;
    std::string text;
    std::vector<std::string> buttons; ///< the first is the default one
    bool critical = false; ///< shown as a warning
    std::optional<std::size_t> cancel; ///< place of the button of Escape and of closing; else the last one
};

/// The button that an alert closed without an answer counts for; 0 without buttons.
[[nodiscard]] inline std::size_t cancelButton(const Alert& alert)
{
    return alert.cancel.value_or(alert.buttons.empty() ? 0 : alert.buttons.size() - 1);
}

/// Questions to the user. Main thread.
class Alerts {
public:
    virtual ~Alerts() = default;

    /// Asks, and gives the place of the chosen button; `cancelButton` when the alert was closed, and when
    /// there is no display to ask on. The loop goes on underneath: never call it from a handler of a view
    /// that the loop may drop.
    [[nodiscard]] virtual std::size_t runModal(const Alert& alert) = 0;

    /// Whether a question waits.
    [[nodiscard]] virtual bool isUp() const = 0;
};

} // namespace platform
