#include "stores/JsonStrings.hpp"

#include <gtest/gtest.h>

namespace corvandell {
namespace {

TEST(JsonStrings, DecodesEveryEscapeAndReplacesWhatIsNotUnicode) {
    const std::pair<const char*, const char*> cases[] = {
        {R"(\ud83c\udfb8 Guitar)", "\xF0\x9F\x8E\xB8 Guitar"},
        {R"(\u00E9\u2122)", "\xC3\xA9\xE2\x84\xA2"},
        {R"(\"q\" \\ \/ \b\f\n\r\t)", "\"q\" \\ / \b\f\n\r\t"},
        {R"(lone \ud83c end)", "lone \xEF\xBF\xBD end"},
        {R"(\ud83c\u0041)", "\xEF\xBF\xBD"
                            "A"},
        {R"(short \u12 \x)", "short \xEF\xBF\xBD"
                             "12 \xEF\xBF\xBD"},
        {"trailing \\", "trailing \\"},
    };
    for (const auto& [raw, expected] : cases) {
        EXPECT_EQ(decodeJsonString(raw), expected) << raw;
    }
}

TEST(JsonStrings, FindsTheValueTheWayTheServiceReadersDo) {
    const std::string text = R"({"id":1,"title" : "Say \"hi\" \u0026 go","subtitle":"x"})";
    EXPECT_EQ(readDecodedString(text, "title"), "Say \"hi\" & go");
    EXPECT_EQ(readDecodedString(text, "missing"), "");
    EXPECT_EQ(readDecodedString(R"({"title":"runs \u0026 on)", "title"), "runs & on");
}

} // namespace
} // namespace corvandell
