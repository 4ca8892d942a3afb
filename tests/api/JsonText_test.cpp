// Service replies and our own files are only seen through these, so each edge is format.
#include "api/JsonText.hpp"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

namespace corvandell {
namespace {

TEST(JsonText, ReadStringTakesTheNextStringAfterTheColonAndUnescapesIt) {
    const std::vector<std::tuple<std::string, std::string, std::string>> cases = {
        {R"({"n":5,"name":"x"})", "n", "name"},
        {R"({"v":"a\u00e9b"})", "v", "au00e9b"},
        {R"({"v":"a\rb"})", "v", "arb"},
        {R"({"v":"say \"hi\" \\ \/"})", "v", R"(say "hi" \ /)"},
        {R"({"userId":"u1","id":"i2"})", "id", "i2"},
        {R"({"v":5})", "v", ""},
        {R"({"v":"runs to the end)", "v", "runs to the end"},
        {R"({"v" "no colon"})", "v", ""},
    };
    for (const auto& [text, key, expected] : cases) {
        EXPECT_EQ(readString(text, key), expected) << text;
    }
}

TEST(JsonText, ReadBoolLooksAtEightCharactersAfterTheColon) {
    const std::vector<std::tuple<std::string, bool, bool>> cases = {
        {R"("online": true)", false, true},      {R"("online":"true")", false, true},
        {R"("online":null)", false, false},      {R"("other":true)", false, false},
        {R"("online":     true)", false, false}, {R"("online":    true)", false, true},
    };
    for (const auto& [text, defaultValue, expected] : cases) {
        EXPECT_EQ(readBool(text, "online", defaultValue), expected) << text;
    }
}

TEST(JsonText, NumbersFollowStoiStollAndStodAndFallBackOnAnyFailure) {
    const std::vector<std::tuple<std::string, int>> cases = {
        {R"("7")", -1},          {"null", -1},       {"\n\t -5,", -5}, {"0x1F", 0},
        {"2147483647", INT_MAX}, {"2147483648", -1},
    };
    for (const auto& [value, expected] : cases) {
        EXPECT_EQ(readInt(R"({"count":)" + value, "count", -1), expected) << value;
    }
    EXPECT_EQ(readInt(R"({"other":3})", "count", -1), -1);
    EXPECT_EQ(readInt64(R"({"t":9223372036854775807})", "t", 0), INT64_MAX);
    EXPECT_EQ(readInt64(R"({"t":9223372036854775808})", "t", 7), 7);
    EXPECT_DOUBLE_EQ(readDouble(R"({"avg": -1e3,})", "avg", 0.0), -1000.0);
    EXPECT_DOUBLE_EQ(readDouble(R"({"avg":"4.5"})", "avg", 2.5), 2.5);
    EXPECT_DOUBLE_EQ(readDouble(R"({"avg":1e999})", "avg", 2.5), 2.5);
}

TEST(JsonText, ReadObjectListSplitsTheKeysArrayOrElseTheWholeText) {
    const std::vector<std::tuple<std::string, std::vector<std::string>>> cases = {
        {R"([{"a":1},{"b":{"c":2}}])", {R"({"a":1})", R"({"b":{"c":2}})"}},
        {R"({"items":[{"a":1}],"other":[{"z":0}]})", {R"({"a":1})"}},
        {R"({"items":[{"s":"]"},{"t":"x\"]"}],"more":{"m":1}})", {R"({"s":"]"})", R"({"t":"x\"]"})"}},
        {R"({"items":null,"x":{"y":1}})", {R"({"items":null,"x":{"y":1}})"}},
        {R"([{"t":"}{"},{"u":"\"}"}])", {R"({"t":"}{"})", R"({"u":"\"}"})"}},
        {R"(}{"a":1}})", {R"({"a":1})"}},
        {"no objects", {}},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(readObjectList(text, "items"), expected) << text;
    }
}

TEST(JsonText, EscapersChangeOnlyWhatTheirTargetRequires) {
    const std::vector<std::tuple<std::string, std::string, std::string>> cases = {
        {"a\tb\rc", "a\tb\rc", "a%09b%0Dc"},
        {"a\"b\\c\nd", R"(a\"b\\c\nd)", "a%22b%5Cc%0Ad"},
        {"a b/\xC3\xA9", "a b/\xC3\xA9", "a%20b%2F%C3%A9"},
        {"+&=?\x01\x7F\xFF", "+&=?\x01\x7F\xFF", "%2B%26%3D%3F%01%7F%FF"},
    };
    for (const auto& [input, body, query] : cases) {
        EXPECT_EQ(escapeBodyString(input), body) << input;
        EXPECT_EQ(encodeQueryValue(input), query) << input;
        EXPECT_EQ(readString(R"({"v":")" + escapeBodyString(input) + "\"}", "v"), input) << input;
    }
}

} // namespace
} // namespace corvandell
