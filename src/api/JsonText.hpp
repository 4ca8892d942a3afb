// Key scanners and escapers for every JSON text the client reads or writes.
//
// There is deliberately no JSON parser: each reader finds its key by plain substring
// search and reads the value that follows by simple rules, and writers paste escaped
// values into fixed templates. The service replies and our own files are only ever seen
// through these functions, so their odd edges (a non-string value yields the next string,
// \u escapes stay undecoded) are part of the format and must not be "fixed".
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace corvandell {

// Whether the quoted key occurs anywhere in the text.
bool hasKey(const std::string& text, std::string_view key);

// The next string after the key's colon, unescaped; "" when the key or a quote is missing.
std::string readString(const std::string& text, std::string_view key);

// true/false when the 8 characters after the colon contain "true"/"false".
bool readBool(const std::string& text, std::string_view key, bool defaultValue);

// std::stoi semantics on the text after the colon; any failure gives the default.
int readInt(const std::string& text, std::string_view key, int defaultValue);

// As readInt with std::stoll, for Unix times that outlive 2038.
std::int64_t readInt64(const std::string& text, std::string_view key, std::int64_t defaultValue);

// std::stod semantics on the text after the colon; any failure gives the default.
double readDouble(const std::string& text, std::string_view key, double defaultValue);

// The objects of the array that follows the key; without key or "[", the whole text.
std::vector<std::string> readObjectList(const std::string& text, std::string_view key);

// The "name":"value" pairs of the flat object after the key, white space allowed between
// tokens. Reading stops quietly at anything else, keeping the pairs before it.
std::map<std::string, std::string> readStringMap(const std::string& text, std::string_view key);

// The strings of the flat array after the key's colon ("tags":["a","b"]); reading stops
// quietly at anything that is not a string, keeping the strings before it.
std::vector<std::string> readStringList(const std::string& text, std::string_view key);

// Every top-level {...} slice of the text, string-aware.
std::vector<std::string> splitObjects(std::string_view text);

// \n and \t decode; any other escaped character stands for itself (\u is not decoded).
std::string unescape(std::string_view raw);

// Escapes quote, backslash and line feed for pasting between quotes; all else is raw.
std::string escapeBodyString(std::string_view text);

// Percent-encodes every byte except ASCII letters, digits and "-._~".
std::string encodeQueryValue(std::string_view text);

} // namespace corvandell
