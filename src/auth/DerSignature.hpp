// The signature the service reads: DER SEQUENCE { INTEGER r, INTEGER s }.
//
// The platform signer gives r and s as two fixed 32-byte big-endian halves; verifiers
// (the service, OpenSSL) want the ASN.1 form, where each integer is minimal and signed.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace corvandell {

inline constexpr std::size_t kP256SignatureBytes = 64;

// At most 72 bytes (two 33-byte integers with their tags and lengths, and the sequence's).
std::string derEncodeSignature(const std::array<std::uint8_t, kP256SignatureBytes>& rs);

} // namespace corvandell
