// Our own files cut short, hand edits, and nesting a recursive checker would die on.
#include "api/JsonWellFormed.hpp"

#include "app/LibraryCache.hpp"
#include "app/SettingsFile.hpp"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace corvandell {
namespace {

std::string ourSettingsText() {
    Settings settings = defaultSettings(pathFromUtf8("C:\\Games"));
    // Raw tab, carriage return and high bytes are how the writer leaves them.
    settings.bearerToken = "ey\"J\\h\tb\r\n\x01";
    settings.username = "J\xC3\xBCrgen";
    settings.webGameBrowsers = {{"o/g", "firefox"}, {"a", "chromium"}};
    return formatSettings(settings);
}

std::string ourLibraryText() {
    return formatLibrary({{"t-1", "Quote \"Q\"", "C:\\G", "C:\\G\\q.exe", true, 4102444800, -1},
                          {"t-2", "x", "", "", false, 0, 0}});
}

TEST(JsonWellFormed, SortsTextsIntoWholeEmptyCutShortMalformedAndTooDeep) {
    const auto expectShape = [](JsonShape shape, std::initializer_list<std::string> texts) {
        for (const std::string& text : texts) {
            EXPECT_EQ(checkJsonWellFormed(text).shape, shape) << text.substr(0, 80);
        }
    };
    const std::string deepest(kMaxJsonDepth, '[');
    expectShape(JsonShape::WellFormed,
                {ourSettingsText(), ourLibraryText(), formatLibrary({}), "0",
                 "\xEF\xBB\xBF{\"a\" : [1, -0.5e+3, 2E7, true, false, null, \"\\u0041\\/\"], \"b\":{}}\r\n",
                 deepest + std::string(kMaxJsonDepth, ']'), "[\"" + std::string(1'000'000, '{') + "\"]"});
    expectShape(JsonShape::Empty, {"", " \r\n\t", "\xEF\xBB\xBF"});
    expectShape(JsonShape::CutShort, {"{\"a\":1", "{\"a\":", "{\"a\"", "{\"a", "{\"a\":\"x\\", "[tr", "[1.",
                                      "[-", "[1e+", "{\"a\":1,"});
    expectShape(JsonShape::Malformed, {"{\"a\":1,}", "[1,]", "{a:1}", "{'a':1}", "{\"a\" 1}", "[1 2]", "[}",
                                       "{]", "[01]", "[.5]", "[1.e3]", "[True]", "[nulL]", "{} {}", "{}}"});
    // Bytes that are no JSON at all, and a million closing brackets with nothing open.
    expectShape(JsonShape::Malformed,
                {std::string("{\"a\":\"b\",\0\xFF junk}", 17), "[" + std::string(1'000'000, ']')});
    // One level too deep, and a million open brackets.
    expectShape(JsonShape::TooDeep,
                {deepest + "[" + std::string(kMaxJsonDepth + 1, ']'), std::string(1'000'000, '[')});
}

TEST(JsonWellFormed, EveryCutOfOurFilesBeforeTheLastBracketIsCutShort) {
    for (const std::string& text : {ourSettingsText(), ourLibraryText()}) {
        const std::size_t lastBracket = text.find_last_of("}]");
        for (std::size_t size = 1; size <= lastBracket; ++size) {
            const JsonCheck check = checkJsonWellFormed(std::string_view(text).substr(0, size));
            ASSERT_EQ(check.shape, JsonShape::CutShort) << text.substr(0, size);
            EXPECT_EQ(check.offset, size);
        }
        EXPECT_EQ(checkJsonWellFormed(text.substr(0, lastBracket + 1)).shape, JsonShape::WellFormed);
    }
}

TEST(JsonWellFormed, PointsAtTheFirstByteThatCannotStand) {
    const std::vector<std::pair<std::string, JsonCheck>> cases = {
        {"{\"a\":1,}", {JsonShape::Malformed, 7}},
        {"[1] x", {JsonShape::Malformed, 4}},
        {"[[[", {JsonShape::TooDeep, 2}},
    };
    for (const auto& [text, expected] : cases) {
        const JsonCheck check = checkJsonWellFormed(text, 2);
        EXPECT_EQ(check.shape, expected.shape) << text;
        EXPECT_EQ(check.offset, expected.offset) << text;
    }
}

} // namespace
} // namespace corvandell
