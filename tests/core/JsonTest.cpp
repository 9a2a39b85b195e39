// SPDX-License-Identifier: Apache-2.0
#include "core/Json.h"

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using namespace std::string_literals;

std::string nested(std::size_t levels, char open, char close)
{
    return std::string(levels, open) + std::string(levels, close);
}

TEST(Json, AcceptsOneWholeTextAndNothingElse)
{
    // Depth is counted along one path, not over the whole text.
    std::string wide = "[";
    for (int i = 0; i < 1000; ++i)
        wide += nested(100, '[', ']') + ",";
    const std::pair<std::string, bool> cases[] {
        { wide + "{}]", true },
        { "{}", true },
        { " [1, 2]\r\n", true },
        { R"({"a":"\u00e9\ud83d\ude00"})", true },
        { "7", true },
        { "", false },
        { "{", false },
        { R"({"a":1)", false },
        { "{} {}", false },
        { "{}\0{\"a\":1}"s, false },
        { "{\"a\":\"\0\"}"s, false },
        { "{\"a\":\"\xff\"}", false },
        { "{\"a\":\"\xed\xa0\x80\"}", false }, // a surrogate in UTF-8
        { R"({"a":"\ud800"})", false }, // half a pair
        { R"({"a":NaN})", false },
        { R"({"a":1e999})", false },
        { R"({"a":01})", false },
        { R"({"a":1,})", false },
        { "{} // remark", false },
        { nested(128, '[', ']'), true },
        { nested(129, '[', ']'), false },
        { nested(1'000'000, '[', ']'), false },
        { std::string(1'000'000, '['), false },
        { "[" + std::string(std::size_t { 64 } * 1024 * 1024, ' ') + "]", false },
    };
    for (const auto& [text, accepted] : cases)
        EXPECT_EQ(json::parse(text).has_value(), accepted)
            << text.substr(0, 80) << " of " << text.size() << " bytes";
    for (const char* text : { "[]", "null", "\"{}\"", "1", "x" })
        EXPECT_FALSE(json::parseObject(text)) << text;
}

TEST(Json, NumbersAreToldApart)
{
    using Whole = std::optional<std::int64_t>;
    struct Case {
        const char* text;
        std::optional<double> number;
        Whole integer, truncated;
    };
    const Case cases[] { { "12", 12.0, 12, 12 }, { "12.0", 12.0, 12, 12 }, { "-12.0", -12.0, -12, -12 },
        { "1e3", 1000.0, 1000, 1000 }, { "-0", 0.0, 0, 0 }, { "12.5", 12.5, {}, 12 },
        { "-12.9", -12.9, {}, -12 }, { "0.9999", 0.9999, {}, 0 },
        { "9223372036854775807", 9223372036854775807.0, INT64_MAX, INT64_MAX },
        { "-9223372036854775808", -9223372036854775808.0, INT64_MIN, INT64_MIN },
        { "9223372036854775808", 9223372036854775808.0, {}, {} },
        { "18446744073709551615", 18446744073709551615.0, {}, {} },
        { "99999999999999999999999", 1e23, {}, {} }, { "-1e19", -1e19, {}, {} }, { "1e308", 1e308, {}, {} },
        { "true", {}, {}, {} }, { "\"12\"", {}, {}, {} }, { "null", {}, {}, {} }, { "[12]", {}, {}, {} } };
    for (const Case& c : cases) {
        const auto value = json::parse(c.text);
        ASSERT_TRUE(value) << c.text;
        EXPECT_EQ(json::asNumber(*value), c.number) << c.text;
        EXPECT_EQ(json::asInteger(*value), c.integer) << c.text;
        EXPECT_EQ(json::asTruncated(*value), c.truncated) << c.text;
    }
}

TEST(Json, AWrongTypeReadsAsAbsent)
{
    const auto object
        = *json::parse(R"({"text":"t","number":1.5,"flag":false,"object":{},"array":[],"null":null})");
    for (const char* key : { "text", "number", "flag", "object", "array", "null", "absent" }) {
        const std::string_view name = key;
        EXPECT_EQ(json::text(object, key).has_value(), name == "text") << key;
        EXPECT_EQ(json::number(object, key).has_value(), name == "number") << key;
        EXPECT_EQ(json::boolean(object, key).has_value(), name == "flag") << key;
        EXPECT_EQ(json::object(object, key) != nullptr, name == "object") << key;
        EXPECT_EQ(json::array(object, key) != nullptr, name == "array") << key;
        EXPECT_EQ(json::textOr(object, key, "else"), name == "text" ? "t" : "else") << key;
        EXPECT_EQ(json::numberOr(object, key, 9), name == "number" ? 1.5 : 9) << key;
        EXPECT_EQ(json::integerOr(object, key, 9), 9) << key;
    }
    // Anything but an object has no members.
    for (const char* text : { "[]", "null", "\"text\"", "1" })
        EXPECT_EQ(json::member(*json::parse(text), "text"), nullptr) << text;
}

TEST(Json, DumpNeverThrowsAndGivesOneLine)
{
    json::Value value { { "bad", "a\xff\xfe" }, { "line", "a\nb" }, { "real", 0.1 }, { "huge", UINT64_MAX } };
    const std::string text = json::dump(value);
    EXPECT_EQ(
        text, "{\"bad\":\"a\uFFFD\uFFFD\",\"huge\":18446744073709551615,\"line\":\"a\\nb\",\"real\":0.1}");
    EXPECT_TRUE(json::parse(text));
}

} // namespace
