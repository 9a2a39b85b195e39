// SPDX-License-Identifier: Apache-2.0
#include "janitor/JanitorReceipts.h"

#include "core/LocalTime.h"

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr std::string_view folder = "/Library/Application Support/Ostrel/receipts";

} // namespace

std::string JanitorReceipts::receiptsDirectory() const { return files_.homeDirectory().append(folder); }

std::string JanitorReceipts::pathAt(platform::Instant now) const
{
    return fmt::format("{}/{}.jsonl", receiptsDirectory(), localDayText(now));
}

std::string JanitorReceipts::receiptsPathToday() const { return pathAt(clock_.now()); }

std::string JanitorReceipts::writeReceipt(json::Value object) const
{
    // One reading of the clock, so that a line of midnight lies in the file of its own day.
    const auto now = clock_.now();
    const std::string path = pathAt(now);
    object["ts"] = fmt::format("{} {}", localDayText(now), localClockText(now));
    const bool written
        = files_.createDirectories(receiptsDirectory()) && files_.appendLine(path, json::dump(object));
    return written ? path : std::string();
}

std::string receiptLine(const json::Value& receipt)
{
    const auto text = [&receipt](std::string_view key) { return json::textOr(receipt, key, ""); };
    const auto number = [&receipt](std::string_view key) { return json::integerOr(receipt, key, 0); };
    const std::string kind = json::textOr(receipt, "kind", "action");
    if (kind == "stop")
        return fmt::format("{} · stop {} pid {} · {} mb · {}", text("ts"), text("name"), number("pid"),
            number("rss_mb"), text("result"));
    // As a number of JSON: the shortest that reads back the same, always with a fraction.
    if (kind == "clean")
        return fmt::format("{} · clean {} · {} files · {} mb", text("ts"), text("group"), number("removed"),
            json::dump(json::numberOr(receipt, "freed_mb", 0)));
    return fmt::format("{} · {}", text("ts"), kind);
}

std::vector<std::string> receiptLines(const json::Value& reply, std::size_t limit)
{
    std::vector<std::string> lines;
    const json::Value* receipts = json::array(reply, "receipts");
    if (!receipts)
        return lines;
    for (const json::Value& receipt : *receipts) {
        if (lines.size() == limit)
            break;
        if (receipt.is_object())
            lines.push_back(receiptLine(receipt));
    }
    return lines;
}

} // namespace ostrel
