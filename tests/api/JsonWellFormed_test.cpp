// The well-formedness check on our own files whole and cut short, on hand edits, and on
// hostile nesting that a recursive checker would die on.
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
    const std::vector<std::pair<std::string, JsonShape>> cases = {
        {ourSettingsText(), JsonShape::WellFormed},
        {ourLibraryText(), JsonShape::WellFormed},
        {formatLibrary({}), JsonShape::WellFormed},
        {"\xEF\xBB\xBF{\"a\" : [1, -0.5e+3, 2E7, true, false, null, \"\\u0041\\/\"], \"b\":{}}\r\n",
         JsonShape::WellFormed},
        {"0", JsonShape::WellFormed},
        {"", JsonShape::Empty},
        {" \r\n\t", JsonShape::Empty},
        {"\xEF\xBB\xBF", JsonShape::Empty},
        {"{\"a\":1", JsonShape::CutShort},
        {"{\"a\":", JsonShape::CutShort},
        {"{\"a\"", JsonShape::CutShort},
        {"{\"a", JsonShape::CutShort},
        {"{\"a\":\"x\\", JsonShape::CutShort},
        {"[tr", JsonShape::CutShort},
        {"[1.", JsonShape::CutShort},
        {"[-", JsonShape::CutShort},
        {"[1e+", JsonShape::CutShort},
        {"{\"a\":1,", JsonShape::CutShort},
        {"{\"a\":1,}", JsonShape::Malformed},
        {"[1,]", JsonShape::Malformed},
        {"{a:1}", JsonShape::Malformed},
        {"{'a':1}", JsonShape::Malformed},
        {"{\"a\" 1}", JsonShape::Malformed},
        {"[1 2]", JsonShape::Malformed},
        {"[}", JsonShape::Malformed},
        {"{]", JsonShape::Malformed},
        {"[01]", JsonShape::Malformed},
        {"[.5]", JsonShape::Malformed},
        {"[1.e3]", JsonShape::Malformed},
        {"[True]", JsonShape::Malformed},
        {"[nulL]", JsonShape::Malformed},
        {"{} {}", JsonShape::Malformed},
        {"{}}", JsonShape::Malformed},
        {std::string("{\"a\":\"b\",\0\xFF junk}", 17), JsonShape::Malformed},
        {std::string(kMaxJsonDepth, '[') + std::string(kMaxJsonDepth, ']'), JsonShape::WellFormed},
        {std::string(kMaxJsonDepth + 1, '[') + std::string(kMaxJsonDepth + 1, ']'), JsonShape::TooDeep},
        // A million open brackets, and a million closing ones with nothing open.
        {std::string(1'000'000, '['), JsonShape::TooDeep},
        {"[" + std::string(1'000'000, ']'), JsonShape::Malformed},
        {"[\"" + std::string(1'000'000, '{') + "\"]", JsonShape::WellFormed},
    };
    for (const auto& [text, shape] : cases) {
        EXPECT_EQ(checkJsonWellFormed(text).shape, shape) << text.substr(0, 80);
    }
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
