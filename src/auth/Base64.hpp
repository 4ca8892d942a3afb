// Standard base64 with padding, for the public key, signatures and avatar uploads.
#pragma once

#include <string>
#include <string_view>

namespace corvandell {

std::string base64Encode(std::string_view bytes);

} // namespace corvandell
