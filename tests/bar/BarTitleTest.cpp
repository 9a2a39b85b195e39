// SPDX-License-Identifier: Apache-2.0
#include "bar/BarTitle.h"
#include "bar/BarStateFile.h"

#include "support/FakeFileManager.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using enum BarDisplayMode;

BarReading reading(std::optional<std::int64_t> mcp = 0)
{
    return { .stats = { .swapUsedMB = 1,
                 .swapTotalMB = 8,
                 .load1 = 2.25,
                 .pressureLevel = 2,
                 .usedBytes = 425,
                 .totalBytes = 1000,
                 .freeMB = 1536 },
        .cpu = 16.5,
        .mcp = mcp,
        .source = "local CLI" };
}

TEST(BarTitle, ShowsTheChosenPartsInTheOrderOfTheBar)
{
    const BarParts all { "mcp", "load", "swap", "mem", "cpu" };
    struct Case {
        BarDisplayMode mode;
        BarParts parts;
        std::optional<std::int64_t> mcp;
        const char* title;
    };
    const Case cases[] {
        { mark, all, 0, "" },
        { hidden, all, 0, "" },
        { value, all, 0, "cpu 17% · mem 43% · swap 13% · load 2.2 · mcp 0" },
        { markValue, all, {}, " cpu 17% · mem 43% · swap 13% · load 2.2 · mcp …" },
        { value, {}, 0, "cpu 17% · swap 13%" },
        { markValue, { "gpu" }, 0, " swap 13%" },
        { value, { "gpu", "mcp" }, 12, "mcp 12" },
    };
    for (const Case& c : cases)
        EXPECT_EQ(barTitle(c.mode, c.parts, reading(c.mcp)), c.title) << rawValue(c.mode) << c.parts.size();
}

TEST(BarTitle, TheTooltipAndTheMenuTellThePressure)
{
    EXPECT_EQ(
        barToolTip(reading()), "ostrel · cpu 17% · mem 43% · swap 13% · free 1.5 gb · warn · local CLI");
    EXPECT_EQ(barMenuHeadline(reading()), "ostrel · cpu 17% · mem 43% · swap 13% · warn");
}

TEST(BarTitle, ModesAreNamedByTheirStoredWords)
{
    const std::pair<BarDisplayMode, const char*> modes[] { { mark, "mark" }, { markValue, "mark + value" },
        { value, "value" }, { hidden, "hidden" } };
    for (const auto& [mode, word] : modes) {
        EXPECT_EQ(rawValue(mode), word);
        EXPECT_EQ(barDisplayMode(word), mode);
    }
    for (const char* word : { "", "Mark", "mark+value" })
        EXPECT_FALSE(barDisplayMode(word)) << word;
}

TEST(BarStateFile, GivesTheFilesTextWithoutBlanksAtItsEnds)
{
    FakeFileManager files;
    const std::string path = "/home/someone/.config/zol-mini-apps/ostrel-bar-state.json";
    EXPECT_EQ(barStateFile(files), path);
    EXPECT_EQ(readBarState(files), std::nullopt);
    for (const auto& [text, state] :
        { std::pair { " \r\n\t{ }\n\n ", "{ }" }, { "\n", "" }, { "a\nb", "a\nb" } }) {
        files.contents[path] = text;
        EXPECT_EQ(readBarState(files), state);
    }
}

} // namespace
