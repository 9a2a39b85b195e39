// SPDX-License-Identifier: Apache-2.0
#include "hints/CompanionPolicy.h"

#include "core/Json.h"
#include "readings/NativeStats.h"

#include <algorithm>
#include <utility>

namespace ostrel {

namespace {

using Date = CompanionPolicy::Date;

/// From the clock's own epoch to that of the stored dates.
constexpr platform::Seconds epoch { 978307200 };
/// Thirty receipts take two kilobytes. What is far longer wasn't written here, and every tick would read it.
constexpr std::size_t longestText = 262144;

double stored(const Date& date) { return (date.time_since_epoch() - epoch).count(); }

Date date(double stored) { return Date(platform::Seconds(stored) + epoch); }

/// Whether the member is absent, or null, or was taken as a date.
bool takeDate(const json::Value& object, std::string_view key, std::optional<Date>& into)
{
    const json::Value* const found = json::member(object, key);
    if (!found || found->is_null())
        return true;
    const auto number = json::asNumber(*found);
    if (number)
        into = date(*number);
    return number.has_value();
}

} // namespace

int CompanionPolicy::Gesture::flashes(int level)
{
    if (level == 4)
        return 2;
    return level == 2 ? 1 : 0;
}

int CompanionPolicy::Gesture::observe(int level)
{
    const bool changed = std::exchange(lastLevel, level) != level;
    return changed ? flashes(level) : 0;
}

std::string_view CompanionPolicy::pressure(int level) { return pressureWord(level); }

bool CompanionPolicy::elevated(int level) { return level == 2 || level == 4; }

bool CompanionPolicy::observe(
    int level, const Date& now, platform::Seconds maxGap, bool enabled, bool occupied)
{
    const auto before = std::exchange(previous_, now);
    const bool continuous = before && now >= *before && now - *before <= maxGap;
    if (level == 1) {
        since_.reset();
        episodePresented = false;
        return false;
    }
    if (!enabled || !elevated(level)) {
        since_.reset();
        return false;
    }
    if (!continuous || !since_)
        since_ = now;
    if (occupied || episodePresented || now - *since_ < patience)
        return false;
    // A date that lies ahead holds hints back too: the clock was set, and what it said can't be trusted.
    if (lastPresented && now - *lastPresented < coolDown)
        return false;
    return !snoozedUntil || now >= *snoozedUntil;
}

void CompanionPolicy::record(std::string_view state, const Date& at)
{
    if (state == "presented") {
        lastPresented = at;
        episodePresented = true;
    }
    if (state == "snoozed")
        snoozedUntil = at + snooze;
    receipts.push_back({ at, std::string(state) });
    if (receipts.size() > mostReceipts)
        receipts.erase(receipts.begin(), receipts.end() - mostReceipts);
}

std::string CompanionPolicy::encoded() const
{
    json::Value all = { { "episodePresented", episodePresented }, { "receipts", json::Value::array() } };
    if (lastPresented)
        all["lastPresented"] = stored(*lastPresented);
    if (snoozedUntil)
        all["snoozedUntil"] = stored(*snoozedUntil);
    for (const Receipt& receipt : receipts)
        all["receipts"].push_back({ { "at", stored(receipt.at) }, { "state", receipt.state } });
    return json::dump(all);
}

std::optional<CompanionPolicy> CompanionPolicy::decoded(std::string_view bytes)
{
    if (bytes.size() > longestText)
        return std::nullopt;
    const auto all = json::parseObject(bytes);
    if (!all)
        return std::nullopt;
    CompanionPolicy policy;
    const auto presented = json::boolean(*all, "episodePresented");
    const json::Value* const receipts = json::array(*all, "receipts");
    if (!presented || !receipts || !takeDate(*all, "lastPresented", policy.lastPresented)
        || !takeDate(*all, "snoozedUntil", policy.snoozedUntil))
        return std::nullopt;
    policy.episodePresented = *presented;
    for (const json::Value& one : *receipts) {
        const auto at = json::number(one, "at");
        const auto state = json::text(one, "state");
        if (!at || !state)
            return std::nullopt;
        policy.receipts.push_back({ date(*at), *state });
    }
    if (policy.receipts.size() > mostReceipts)
        policy.receipts.erase(policy.receipts.begin(), policy.receipts.end() - mostReceipts);
    return policy;
}

} // namespace ostrel
