// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Clock.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// Decides when a pressure hint may show: after twenty seconds of unbroken pressure, once per episode, and
/// rarely. It also keeps the short record of what became of each hint. A plain value that knows no views;
/// what has to survive a restart goes through its JSON.
class CompanionPolicy {
public:
    /// Wall-clock time with fractions of a second, whose range no stored number can leave.
    using Date = std::chrono::time_point<std::chrono::system_clock, platform::Seconds>;

    /// How long pressure has to last, how rare hints are, and how long a snooze is.
    static constexpr platform::Seconds patience { 20 };
    static constexpr platform::Seconds coolDown { 1800 };
    static constexpr platform::Seconds snooze { 1800 };
    /// The newest are kept.
    static constexpr std::size_t mostReceipts = 30;

    /// What became of a hint on screen.
    struct Receipt {
        Date at;
        std::string state;

        bool operator==(const Receipt&) const = default;
    };

    /// Plans the flashes of a change of level.
    struct Gesture {
        /// Between two flashes.
        static constexpr platform::Seconds beat { 0.4 };

        std::optional<int> lastLevel;

        /// One for a warning, two for critical, none otherwise.
        [[nodiscard]] static int flashes(int level);
        /// The flashes of this reading: none while the level stays what it was.
        int observe(int level);
        void reset() { lastLevel.reset(); }
    };

    std::optional<Date> lastPresented; ///< of the last real hint
    std::optional<Date> snoozedUntil;
    std::vector<Receipt> receipts; ///< oldest first
    bool episodePresented = false; ///< this episode has had its hint

    /// The word for a level: "normal", "warning", "critical", "unknown".
    [[nodiscard]] static std::string_view pressure(int level);
    /// Whether it is one that hints speak of.
    [[nodiscard]] static bool elevated(int level);

    /// Takes one reading, and says whether a hint should be shown now. Readings further apart than `maxGap`,
    /// or in the wrong order, don't belong to one run. `enabled`: hints are on; `occupied`: there is no room
    /// for one, though time goes on. A yes is only an answer; `record` tells that a hint went up.
    [[nodiscard]] bool observe(
        int level, const Date& now, platform::Seconds maxGap, bool enabled, bool occupied);

    /// Writes a receipt; "presented" and "snoozed" have their consequences.
    void record(std::string_view state, const Date& at);

    /// One JSON object, the same bytes for the same value. Dates are seconds since 2001 in UTC.
    [[nodiscard]] std::string encoded() const;
    /// Nothing for what isn't such an object, whole and of the right types.
    [[nodiscard]] static std::optional<CompanionPolicy> decoded(std::string_view bytes);

    bool operator==(const CompanionPolicy&) const = default;

private:
    std::optional<Date> since_; ///< start of the present run of elevated readings
    std::optional<Date> previous_; ///< of the last reading of any level
};

} // namespace ostrel
