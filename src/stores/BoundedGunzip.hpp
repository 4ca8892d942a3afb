// gzip receipts inflated under a cap on their content, whatever their trailers claim.
//
// The gzip trailer's size is written by whoever wrote the file: a receipt of about 1 MB
// whose trailer says 100 bytes can hold a DEFLATE stream that expands to 1 GiB. So before
// anything is inflated into memory, each member's stream is measured by a decoder that
// only counts (it keeps no window and writes nothing) and stops as soon as the count
// passes the cap; only a file that fits is handed to the git engine's gunzip, which checks
// every CRC-32 and length as before. The trailer is not consulted at all: in a damaged
// file it is whatever bytes happen to end it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace corvandell {

enum class GunzipProblem { None, NotGzip, Damaged, TooLarge };

struct BoundedGunzip {
    std::optional<std::string> content;
    GunzipProblem problem = GunzipProblem::None;
};

BoundedGunzip gunzipUpTo(std::string_view file, std::size_t maxContentBytes);

// What the raw DEFLATE stream at the start of `input` inflates to, without inflating it.
struct DeflateMeasure {
    GunzipProblem problem = GunzipProblem::None; // Damaged, TooLarge, or None
    std::size_t contentBytes = 0;
    std::size_t inputBytes = 0; // the stream's length; a partly used last byte counts whole
};

DeflateMeasure measureDeflate(std::string_view input, std::size_t maxContentBytes);

} // namespace corvandell
