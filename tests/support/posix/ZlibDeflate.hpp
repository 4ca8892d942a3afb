// Streams written by zlib, the reference encoder, for tests that decode them.
#pragma once

#include <gtest/gtest.h>
#include <zlib.h>

#include <string>

namespace corvandell::test {

// Twice the input leaves room for the whole stream in one Z_FINISH call: deflate falls back
// to stored blocks, a few bytes each, rather than expand data. Negative windowBits: raw deflate.
inline std::string deflate_with_zlib(const std::string& data, int level, int strategy = Z_DEFAULT_STRATEGY,
                                     int windowBits = 15) {
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, level, Z_DEFLATED, windowBits, 8, strategy), Z_OK);
    std::string out(2 * data.size() + 1024, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
    stream.avail_in = static_cast<uInt>(data.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}

} // namespace corvandell::test
