// Fuzzes inflate and gunzip, with zlib as the reference. The first byte picks the mode:
//   0  the rest is a zlib stream: ours never faults, whatever zlib decodes in full
//      (Adler-32 checked) ours decodes to the same bytes, occupying the same input, an
//      output limit cuts off exactly the streams whose output would exceed it, and the
//      careful one-symbol path alone gives what the fast loop gives: bytes, count, verdict;
//   1  the rest is a text: zlib compresses it (level from the next byte), ours must give
//      it back exactly on both paths, and the same stream cut inside its compressed data
//      must fail;
//   2  the rest is a gzip file: gunzip never faults;
//   3  the rest is a text: zlib writes it as gzip, gunzip must give it back, and any cut
//      of the file must fail (the trailer's CRC and length are checked).
#include "stores/BoundedGunzip.hpp"
#include "webgames/git/Gzip.hpp"
#include "webgames/git/Inflate.hpp"
#include "webgames/git/InflatePath.hpp"

#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace {

void check(bool condition) {
    if (!condition) {
        __builtin_trap();
    }
}

// zlib's own full decode of a zlib stream, with the input it occupied.
std::optional<std::pair<std::string, std::size_t>> zlibReference(std::string_view input) {
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK) {
        return std::nullopt;
    }
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(input.data()));
    stream.avail_in = static_cast<uInt>(input.size());
    std::string output;
    int status = Z_OK;
    char chunk[16384];
    while (status == Z_OK && output.size() < (std::size_t{64} << 20)) {
        stream.next_out = reinterpret_cast<Bytef*>(chunk);
        stream.avail_out = sizeof(chunk);
        status = inflate(&stream, Z_NO_FLUSH);
        output.append(chunk, sizeof(chunk) - stream.avail_out);
        if (status == Z_BUF_ERROR && stream.avail_in == 0) {
            break;
        }
    }
    const std::size_t consumed = input.size() - stream.avail_in;
    inflateEnd(&stream);
    if (status != Z_STREAM_END) {
        return std::nullopt;
    }
    return std::make_pair(std::move(output), consumed);
}

std::string zlibCompress(std::string_view text, int level, int windowBits) {
    z_stream stream{};
    if (deflateInit2(&stream, level, Z_DEFLATED, windowBits, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
        __builtin_trap();
    }
    std::string output(deflateBound(&stream, static_cast<uLong>(text.size())) + 32, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(output.data());
    stream.avail_out = static_cast<uInt>(output.size());
    check(deflate(&stream, Z_FINISH) == Z_STREAM_END);
    output.resize(stream.total_out);
    deflateEnd(&stream);
    return output;
}

void bothPathsAgree(std::string_view input) {
    using corvandell::git::InflateError;
    using corvandell::git::InflatePath;
    InflateError fastError = InflateError::None;
    InflateError carefulError = InflateError::None;
    const auto fast = corvandell::git::inflate_detail::inflate_zlib_on(InflatePath::Fast, input,
                                                                       input.size() * 4, &fastError);
    const auto careful = corvandell::git::inflate_detail::inflate_zlib_on(InflatePath::CarefulOnly, input,
                                                                          input.size() * 4, &carefulError);
    check(fast.has_value() == careful.has_value() && fastError == carefulError);
    check(!fast || (fast->bytes == careful->bytes && fast->consumed == careful->consumed));
}

void zlibStream(std::string_view input) {
    bothPathsAgree(input);
    const auto ours = corvandell::git::inflate_zlib(input, input.size() * 4);
    corvandell::git::inflate_zlib(input, std::size_t{1} << 40);
    if (const auto reference = zlibReference(input)) {
        check(ours.has_value());
        check(ours->bytes == reference->first);
        check(ours->consumed == reference->second);
    }
    const std::size_t limit = input.size() * 8;
    corvandell::git::InflateError error = corvandell::git::InflateError::None;
    const auto limited = corvandell::git::inflate_zlib(input, std::size_t{1} << 40, &error, limit);
    check(!limited || limited->bytes.size() <= limit);
    check(!ours || limited.has_value() == (ours->bytes.size() <= limit));
}

void compressedText(std::string_view rest) {
    if (rest.empty()) {
        return;
    }
    const int level = static_cast<unsigned char>(rest[0]) % 10;
    const std::string_view text = rest.substr(1);
    const std::string stream = zlibCompress(text, level, 15);
    bothPathsAgree(stream);
    const auto ours = corvandell::git::inflate_zlib(stream, text.size());
    check(ours.has_value() && ours->bytes == text && ours->consumed == stream.size());
    // Past the 2-byte header and before the 4-byte trailer lies the compressed data; an
    // input that ends anywhere inside it cannot be a whole stream.
    if (stream.size() > 6) {
        const std::size_t cut =
            2 + static_cast<std::size_t>(static_cast<unsigned char>(rest[0])) % (stream.size() - 6);
        check(!corvandell::git::inflate_zlib(std::string_view(stream).substr(0, cut), text.size()));
    }
}

// The receipt reader's bounded gunzip agrees with gunzip on any file, and refuses exactly
// the content one byte over its cap.
void boundedAgrees(std::string_view file) {
    const auto whole = corvandell::git::gunzip(file);
    const auto bounded = corvandell::gunzipUpTo(file, SIZE_MAX);
    check(whole == bounded.content);
    if (whole && !whole->empty()) {
        check(corvandell::gunzipUpTo(file, whole->size() - 1).problem == corvandell::GunzipProblem::TooLarge);
    }
}

void gzippedText(std::string_view text) {
    const std::string file = zlibCompress(text, 6, 31);
    const auto ours = corvandell::git::gunzip(file);
    check(ours.has_value() && *ours == text);
    boundedAgrees(file);
    const std::size_t cut = text.empty() ? 0 : static_cast<unsigned char>(text[0]) % file.size();
    check(!corvandell::git::gunzip(std::string_view(file).substr(0, cut)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string_view rest(reinterpret_cast<const char*>(data) + 1, size - 1);
    switch (data[0] & 3) {
    case 0:
        zlibStream(rest);
        break;
    case 1:
        compressedText(rest);
        break;
    case 2:
        boundedAgrees(rest);
        break;
    default:
        gzippedText(rest);
        break;
    }
    return 0;
}
