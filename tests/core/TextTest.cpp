// SPDX-License-Identifier: Apache-2.0
#include "core/Text.h"

#include <limits>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using namespace std::string_literals;

TEST(Text, RoundsHalvesAwayFromZeroAndGivesZeroForWhatDoesNotFit)
{
    constexpr double infinite = std::numeric_limits<double>::infinity();
    const std::pair<double, std::int64_t> cases[] { { 0.5, 1 }, { 1.5, 2 }, { 2.5, 3 }, { -0.5, -1 },
        { -2.5, -3 }, { 2.4999, 2 }, { 0.49999999999999994, 0 }, { -9223372036854775808.0, INT64_MIN },
        { 9223372036854774784.0, 9223372036854774784 }, { 9223372036854775808.0, 0 }, { 1e308, 0 },
        { infinite, 0 }, { -infinite, 0 }, { std::numeric_limits<double>::quiet_NaN(), 0 } };
    for (const auto& [value, whole] : cases)
        EXPECT_EQ(rounded(value), whole) << value;
}

TEST(Text, TrimsBothEndsOnly)
{
    const std::pair<std::string_view, std::string_view> cases[] { { "", "" }, { " \t\r\n\v\f", "" },
        { "a", "a" }, { " a b\n", "a b" }, { "\n\na", "a" }, { "a\t ", "a" },
        { "\u00a0\u3000a\u2003b \u00a0", "a\u2003b" }, { "\u2009 \u0085", "" },
        { "\xa0"
          "a",
            "\xa0"
            "a" } };
    for (const auto& [text, rest] : cases)
        EXPECT_EQ(trimmed(text), rest);
}

TEST(Text, LowersLettersOfAnyScriptAndKeepsWhatIsNotText)
{
    const std::pair<std::string, std::string> cases[] {
        { "", "" },
        { "Claude CODE 1.0", "claude code 1.0" },
        { "ÄÖÜ ÉÎ ΑΒΓ ДЖ", "äöü éî αβγ дж" },
        { "e\u0301 stays apart", "e\u0301 stays apart" }, // no composing
        { "Ａ", "ａ" }, // a wide letter
        { "ß日本", "ß日本" },
        { "ABC\xff\xfeÄ\xc3", "abc\xff\xfeä\xc3" },
        { "A\0B"s, "a\0b"s },
    };
    for (const auto& [text, lower] : cases)
        EXPECT_EQ(lowered(text), lower) << text;
    EXPECT_EQ(upperCased("élevé 日a\xff"), "ÉLEVÉ 日A\xff");
    EXPECT_EQ(lowered(std::string_view()), "");
}

TEST(Text, CutsBetweenSignsAndTakesABrokenByteForOne)
{
    const std::tuple<std::string_view, std::size_t, std::string_view> cases[] { { "abc", 2, "ab" },
        { "abc", 4, "abc" }, { "", 1, "" }, { "äöü", 2, "äö" }, { "a\xff\xc3", 2, "a\xff" },
        { "😀b", 1, "😀" } };
    for (const auto& [text, most, first] : cases)
        EXPECT_EQ(firstSigns(text, most), first) << text;
    const std::tuple<const char*, std::size_t, const char*> ends[] { { "abc", 2, "bc" }, { "abc", 9, "abc" },
        { "aé€😀", 2, "€😀" }, { "€", 0, "" }, { "€", 1, "€" }, { "", 3, "" } };
    for (const auto& [text, most, last] : ends)
        EXPECT_EQ(lastSigns(text, most), last) << text;
}

TEST(Text, AFilesAddressEscapesWhatAnAddressWouldRead)
{
    EXPECT_EQ(fileUrl("/home/a b/50%#?x/Ä-_.~"), "file:///home/a%20b/50%25%23%3Fx/%C3%84-_.~");
}

TEST(Text, TellsWellFormedUtf8)
{
    const std::pair<std::string, bool> cases[] {
        { "", true },
        { "plain", true },
        { "a\0b"s, true },
        { "é €😀", true },
        { "\xf4\x8f\xbf\xbf", true }, // U+10FFFF
        { "\xf4\x90\x80\x80", false }, // beyond it
        { "\x80", false },
        { "\xc3", false }, // cut in the middle
        { "abc\xe2\x82", false },
        { "\xc0\xaf", false }, // longer than needed
        { "\xe0\x80\xaf", false },
        { "\xed\xa0\x80", false }, // a surrogate
        { "ok then \xff", false },
    };
    for (const auto& [bytes, valid] : cases)
        EXPECT_EQ(isValidUtf8(bytes), valid) << testing::PrintToString(bytes);
}

TEST(Text, JoinsWithTheSeparatorBetween)
{
    EXPECT_EQ(joined({}, ", "), "");
    EXPECT_EQ(joined({ "a" }, ", "), "a");
    EXPECT_EQ(joined({ "a", "", "{}" }, " · "), "a ·  · {}");
}

TEST(Text, SizesTurnToGigabytesAt1024)
{
    const std::pair<std::int64_t, std::string_view> cases[] { { 0, "0 mb" }, { 1023, "1023 mb" },
        { 1024, "1.0 gb" }, { 1075, "1.0 gb" }, { 1076, "1.1 gb" }, { 49152, "48.0 gb" }, { -5, "-5 mb" } };
    for (const auto& [mb, label] : cases)
        EXPECT_EQ(memLabel(mb), label);
}

} // namespace
