// Valve's KeyValues text format, as Steam writes libraryfolders.vdf and appmanifest_*.acf.
//
// The reader is forgiving by design: Steam leaves truncated and malformed files behind, and
// a scanner wants whatever was readable before the damage rather than nothing. It never
// throws, runs in time linear in the input, and refuses nesting deeper than
// kMaxKeyValuesDepth, so hostile input can neither hang it nor exhaust the stack.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace corvandell {

inline constexpr std::size_t kMaxKeyValuesDepth = 64;

struct KeyValuesEntry;

// A string value, or an object holding (key, node) pairs in file order.
struct KeyValuesNode {
    bool isObject = false;
    std::string value;                   // a string node's text
    std::vector<KeyValuesEntry> entries; // an object's pairs

    // The first pair whose key matches, ignoring ASCII case; nullptr when none does or this
    // node is a string. Steam itself is inconsistent about key case.
    const KeyValuesNode* find(std::string_view key) const;
    // The string value of the first pair with that key; "" when it is missing or an object.
    std::string_view text(std::string_view key) const;
    // The first pair whose node is an object; nullptr when there is none.
    const KeyValuesNode* firstObject() const;
};

struct KeyValuesEntry {
    std::string key;
    KeyValuesNode node;
};

enum class KeyValuesToken { OpenBrace, CloseBrace, String, End };

// Splits the text into tokens; skips whitespace and "//" comments. Quoted strings decode
// \\ \" \n \t \r and keep any other backslash pair as it stands, so a path written with
// single backslashes survives. An unterminated quoted string is the end of the input.
class KeyValuesTokenizer {
public:
    explicit KeyValuesTokenizer(std::string_view text);
    KeyValuesToken next();
    // The text of the last String token.
    const std::string& string() const { return string_; }

private:
    void skipBlanksAndComments();
    KeyValuesToken readQuoted();
    KeyValuesToken readBare();

    std::string_view text_;
    std::size_t position_ = 0;
    std::string string_;
};

// The whole text as one object node holding its top-level pairs. A leading UTF-8 byte order
// mark is skipped; reading stops at the first malformed token with what it had gathered.
KeyValuesNode parseKeyValues(std::string_view text);

} // namespace corvandell
