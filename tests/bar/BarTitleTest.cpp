// SPDX-License-Identifier: Apache-2.0
#include "bar/BarTitle.h"
#include "bar/BarStateFile.h"

#include "support/FakeFileManager.h"

#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using enum BarDisplayMode;

BarReading reading()
{
    return { .stats = { .swapUsedMB = 1,
                 .swapTotalMB = 8,
                 .load1 = 2.25,
                 .ncpu = 4,
                 .pressureLevel = 2,
                 .usedBytes = 425,
                 .totalBytes = 1000,
                 .freeMB = 1536 },
        .cpu = 16.5,
        .mcp = 0,
        .source = "local CLI" };
}

TEST(BarTitle, ShowsTheChosenPartsInTheOrderOfTheBar)
{
    const BarParts all { "mcp", "load", "swap", "mem", "cpu" };
    struct Case {
        BarDisplayMode mode;
        BarParts parts;
        const char* title;
    };
    const Case cases[] {
        { mark, all, "" },
        { hidden, all, "" },
        { value, all, "cpu 17% · mem 43% · swap 13% · load 2.2 · mcp 0" },
        { markValue, all, " cpu 17% · mem 43% · swap 13% · load 2.2 · mcp 0" },
        { value, { "cpu", "swap" }, "cpu 17% · swap 13%" },
        { value, { "mem" }, "mem 43%" },
        { value, {}, "cpu 17% · swap 13%" },
        { markValue, {}, " cpu 17% · swap 13%" },
        { markValue, { "gpu" }, " swap 13%" },
        { value, { "gpu", "load" }, "load 2.2" },
    };
    for (const Case& c : cases)
        EXPECT_EQ(barTitle(c.mode, c.parts, reading()), c.title) << rawValue(c.mode) << c.parts.size();
}

TEST(BarTitle, McpIsOpenUntilASnapshotHasCounted)
{
    BarReading now = reading();
    now.mcp.reset();
    EXPECT_EQ(barTitle(value, { "mcp" }, now), "mcp …");
    now.mcp = 12;
    EXPECT_EQ(barTitle(value, { "mcp" }, now), "mcp 12");
}

TEST(BarTitle, TheTooltipAndTheMenuTellThePressure)
{
    EXPECT_EQ(
        barToolTip(reading()), "ostrel · cpu 17% · mem 43% · swap 13% · free 1.5 gb · warn · local CLI");
    EXPECT_EQ(barMenuHeadline(reading()), "ostrel · cpu 17% · mem 43% · swap 13% · warn");
    EXPECT_EQ(barToolTip({ .stats = {}, .cpu = 0, .mcp = {}, .source = "native" }),
        "ostrel · cpu 0% · mem 0% · swap 0% · free 0 mb · ? · native");
}

TEST(BarTitle, ModesAndPartsAreNamedByTheirStoredWords)
{
    const std::pair<BarDisplayMode, const char*> modes[] { { mark, "mark" }, { markValue, "mark + value" },
        { value, "value" }, { hidden, "hidden" } };
    for (const auto& [mode, word] : modes) {
        EXPECT_EQ(rawValue(mode), word);
        EXPECT_EQ(barDisplayMode(word), mode);
    }
    const std::pair<BarPart, const char*> parts[] { { BarPart::cpu, "cpu" }, { BarPart::mem, "mem" },
        { BarPart::swap, "swap" }, { BarPart::load, "load" }, { BarPart::mcp, "mcp" } };
    for (const auto& [part, word] : parts) {
        EXPECT_EQ(rawValue(part), word);
        EXPECT_EQ(barPart(word), part);
    }
    for (const char* word : { "", "Mark", "mark+value", "cpu " }) {
        EXPECT_FALSE(barDisplayMode(word)) << word;
        EXPECT_FALSE(barPart(word)) << word;
    }
}

TEST(BarStateFile, GivesTheFilesTextWithoutBlanksAtItsEnds)
{
    FakeFileManager files;
    const std::string path = "/home/someone/.config/zol-mini-apps/ostrel-bar-state.json";
    EXPECT_EQ(barStateFile(files), path);
    EXPECT_EQ(readBarState(files), std::nullopt);
    const std::pair<const char*, const char*> cases[] { { "{ \"a\": 1 }\n", "{ \"a\": 1 }" },
        { " \r\n\t{ }\n\n ", "{ }" }, { "", "" }, { "\n", "" }, { "a\nb", "a\nb" } };
    for (const auto& [text, state] : cases) {
        files.contents[path] = text;
        EXPECT_EQ(readBarState(files), state);
    }
}

} // namespace
