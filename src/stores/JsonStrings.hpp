// JSON string values decoded in full, for store files written by JSON libraries.
//
// The service readers deliberately leave "\u00e9" undecoded (the service writes raw UTF-8),
// but the itch app's receipts come from a JSON library that escapes "&" as \u0026 and
// characters beyond the BMP as surrogate pairs, so a title read with those readers shows
// "Rock u0026 Roll". Store readers that need the real text use this instead.
#pragma once

#include <string>
#include <string_view>

namespace corvandell {

// The raw text between a string's quotes with every JSON escape decoded: \" \\ \/ \b \f \n
// \r \t and \uXXXX, a surrogate pair becoming one code point. An unpaired surrogate, a bad
// \u sequence or an unknown escape becomes U+FFFD, so the result is always valid UTF-8 if
// the input was.
std::string decodeJsonString(std::string_view raw);

// The string value of the first `key` in the text, found the way the service readers find
// it (the quoted key, the next colon, the next quote), fully decoded; "" when absent.
std::string readDecodedString(std::string_view text, std::string_view key);

} // namespace corvandell
