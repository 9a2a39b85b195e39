// SPDX-License-Identifier: Apache-2.0
#include "panel/BodyScreen.h"
#include "panel/ReadoutText.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using enum BodyScreen;

OstrelData snapshot(const char* ts)
{
    OstrelData data;
    data.ts = ts;
    return data;
}

TEST(BodyScreen, TabsThatNeedASnapshotSayWhatIsMissing)
{
    struct Case {
        std::optional<OstrelData> data;
        const char* source;
        BodyChoice expected;
    };
    const Case cases[] {
        { std::nullopt, "native", { loading, "native monitor active · waiting for details" } },
        { std::nullopt, "error", { error, "collector unavailable · retry below" } },
        { snapshot(""), "local CLI", { empty, "No detailed snapshot available" } },
        { snapshot(""), "error", { empty, "No detailed snapshot available" } },
        { snapshot("12:00"), "error", { stale, "Snapshot stale · collector unavailable" } },
        { snapshot("12:00"), "local CLI", { tab, "" } },
    };
    using enum OstrelMode;
    for (const Case& c : cases) {
        for (const OstrelMode mode : { overview, system, processes, sessions, diagnosis, cleanup })
            EXPECT_EQ(chooseBody(mode, c.data, c.source), c.expected)
                << words(mode).title << " " << c.source << " " << c.expected.readout;
        for (const OstrelMode mode : { server, settings })
            EXPECT_EQ(chooseBody(mode, c.data, c.source), (BodyChoice { tab, "" })) << words(mode).title;
        EXPECT_EQ(chooseBody(automations, c.data, c.source),
            (BodyChoice { tab, "every scheduler on this Mac and the server, one list" }));
    }
}

TEST(ReadoutText, TellsWhatIsLiveAndWhatTheCollectorSaid)
{
    OstrelData data = snapshot("12:00");
    data.fan = { { "mcp", 12 }, { "node", 4 } };
    data.claudeSessions = 3;
    data.codexSessions = 2;
    data.verdict.level = "warn";
    const NativeStats native { .swapUsedMB = 1, .swapTotalMB = 8, .load1 = 2.26 };
    EXPECT_EQ(readoutText(data, native, 16.5, "12s ago", false),
        "now: cpu 17% · swap 13% · load 2.3   |   collector (12s ago): 12 mcp / 5 sess · warn");
    EXPECT_EQ(readoutText(data, native, 0, std::nullopt, true),
        "now: cpu 0% · swap 13% · load 2.3   |   collector (no snapshot yet): 12 mcp / 5 sess · warn"
        " · stale, refresh to update");
    data.claudeSessions = std::numeric_limits<std::int64_t>::max();
    EXPECT_NE(readoutText(data, native, 0, {}, false).find("/ 9223372036854775807 sess"), std::string::npos);
}

TEST(ReadoutText, WithoutACountOfMcpTheFamiliesAreSummed)
{
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    using Fan = std::vector<OstrelData::FanEntry>;
    const std::pair<Fan, std::int64_t> cases[] {
        { {}, 0 },
        { { { "node", 4 }, { "qmd", 5 } }, 9 },
        { { { "node", 4 }, { "mcp", 0 } }, 0 },
        { { { "node", most }, { "qmd", 1 } }, most },
    };
    for (const auto& [fan, expected] : cases) {
        OstrelData data;
        data.fan = fan;
        EXPECT_EQ(mcpCount(data), expected) << fan.size();
    }
}

} // namespace
