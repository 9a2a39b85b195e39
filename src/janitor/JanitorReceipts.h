// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/Json.h"
#include "platform/Clock.h"
#include "platform/FileManager.h"

#include <cstddef>
#include <string>
#include <vector>

namespace ostrel {

/// The proof of what was done: one file for each local day, one line of JSON for each action, appended and
/// never changed. Scripts and other processes append to the same files. Any thread.
class JanitorReceipts {
public:
    /// Receipts that a tab asks for.
    static constexpr std::size_t shownLimit = 12;

    /// Both must outlive this.
    JanitorReceipts(platform::FileManager& files, const platform::Clock& clock)
        : files_(files)
        , clock_(clock)
    {
    }

    [[nodiscard]] std::string receiptsDirectory() const;
    /// The file of the present local day.
    [[nodiscard]] std::string receiptsPathToday() const;
    /// Appends an object with the present local time as its `ts`. The path of the file; empty when the line
    /// couldn't be written.
    std::string writeReceipt(json::Value object) const;

private:
    [[nodiscard]] std::string pathAt(platform::Instant now) const;

    platform::FileManager& files_;
    const platform::Clock& clock_;
};

/// A receipt in one line.
[[nodiscard]] std::string receiptLine(const json::Value& receipt);
/// The first `limit` receipts of a reply in one line each, in its order.
[[nodiscard]] std::vector<std::string> receiptLines(const json::Value& reply, std::size_t limit);

} // namespace ostrel
