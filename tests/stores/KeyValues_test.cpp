// The KeyValues reader against the shapes Steam writes and the damage its files suffer.
#include "stores/KeyValues.hpp"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace corvandell {
namespace {

// The tree as compact text, {key=value,key={...}}, so a case states its whole result.
std::string render(const KeyValuesNode& node) {
    if (!node.isObject) {
        return node.value;
    }
    std::string out = "{";
    for (const auto& entry : node.entries) {
        out += (out.size() > 1 ? "," : "") + entry.key + "=" + render(entry.node);
    }
    return out + "}";
}

TEST(KeyValues, ReadsSteamShapesDecodesEscapesAndKeepsWhatCameBeforeAnyDamage) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {R"("k" "E:\\SteamLibrary")", R"({k=E:\SteamLibrary})"},
        {R"("k" "say \"hi\" }")", R"({k=say "hi" }})"},
        {R"("k" "ends \\" "n" "a\nb\tc\rd")", "{k=ends \\,n=a\nb\tc\rd}"},
        {"\xEF\xBB\xBF\"k\" \"v\"", "{k=v}"},
        {"// head\n\"k\" // note { \" }\n\"a//b\"", "{k=a//b}"},
        {"bare{inner value}next\"q\"", "{bare={inner=value},next=q}"},
        // Damage: truncated, unbalanced, stray or binary input.
        {R"("AppState" { "appid" "10" "name" "Lan)", "{AppState={appid=10}}"},
        {R"("a" { "b" { "c" "d")", "{a={b={c=d}}}"},
        {R"("a" { "b" "c" } } "d" "e")", "{a={b=c}}"},
        {R"("a" { "b" } "c" "d")", "{a={}}"},
        {R"("a" "b\)", "{}"},
        {std::string("\"a\" \"x\0y\" \xFF\xFE {", 14), std::string("{a=x\0y,\xFF\xFE={}}", 13)},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(render(parseKeyValues(text)), expected) << text;
    }
}

TEST(KeyValues, LookupTakesTheFirstKeyIgnoringAsciiCase) {
    const KeyValuesNode root = parseKeyValues(R"("AppState" { "StateFlags" "4" "stateflags" "6" "Sub" {} })");
    const KeyValuesNode* state = root.find("appstate");
    ASSERT_NE(state, nullptr);
    EXPECT_EQ(state->text("STATEFLAGS"), "4");
    EXPECT_EQ(state->text("sub"), ""); // an object has no text
    EXPECT_NE(state->find("SUB"), nullptr);
}

TEST(KeyValues, NestingIsCappedSoHostileInputCannotExhaustTheStack) {
    std::string deep;
    for (int i = 0; i < 100000; ++i) {
        deep += "a{";
    }
    const KeyValuesNode root = parseKeyValues(deep);
    std::size_t depth = 0;
    for (const KeyValuesNode* node = &root; node->find("a"); node = node->find("a")) {
        ++depth;
    }
    EXPECT_EQ(depth, kMaxKeyValuesDepth - 1);
}

} // namespace
} // namespace corvandell
