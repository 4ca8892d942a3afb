// Reading sign-in tokens out of the addresses a person or a browser hands back.
#pragma once

#include <string>
#include <string_view>

namespace corvandell {

struct AddressTokens {
    std::string accessToken;
    std::string refreshToken;
};

// %XX becomes its byte; a % not followed by two hex digits stays as it is. '+' stays '+':
// these are tokens, not form fields.
std::string percentDecode(std::string_view text);

// The tokens of a redirect or pasted address: from the fragment if there is one, else from
// the query, else from the whole text taken as a query. Empty fields when absent.
AddressTokens tokensFromAddress(std::string_view address);

// The token of a pasted verification link: what follows "token=" up to '&' or '#', or the
// whole trimmed text when it is the bare token; percent-decoded.
std::string verificationTokenFromLink(std::string_view link);

} // namespace corvandell
