// gzip members built by hand around a stored DEFLATE block, one header flag or one broken
// field at a time; files written by the real gzip are read in posix/GzipCli_test.cpp.
#include "webgames/Gzip.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace corvandell::git {
namespace {

const std::string kHelloBody("\x01\x05\x00\xfa\xff"
                             "hello",
                             10);
const std::string kHelloTrailer("\x86\xa6\x10\x36\x05\x00\x00\x00", 8); // CRC-32, then ISIZE 5

std::string member(char flags, const std::string& fields = "", const std::string& trailer = kHelloTrailer) {
    return std::string("\x1f\x8b\x08", 3) + flags + std::string("\x00\x00\x00\x00\x00\x03", 6) + fields +
           kHelloBody + trailer;
}

TEST(Gzip, ReadsEveryHeaderFieldAndRejectsAnythingButWholeMembers) {
    const std::string optionalFields = std::string("\x03\x00xyz", 5) + "level.sav" + '\0' + "receipt" + '\0';
    const std::vector<std::tuple<const char*, std::string, std::optional<std::string>>> cases = {
        {"plain member", member('\x00'), "hello"},
        {"text, extra, name and comment", member('\x1d', optionalFields), "hello"},
        {"header CRC", member('\x02', "\xa7\x77"), "hello"},
        {"two members", member('\x00') + member('\x08', std::string("b\0", 2)), "hellohello"},
        {"header CRC wrong", member('\x02', "\xa7\x78"), std::nullopt},
        {"content CRC wrong", member('\x00', "", std::string("\x86\xa6\x10\x37\x05\x00\x00\x00", 8)),
         std::nullopt},
        {"length wrong", member('\x00', "", std::string("\x86\xa6\x10\x36\x06\x00\x00\x00", 8)),
         std::nullopt},
        {"reserved flag", member('\x20'), std::nullopt},
        {"name never ends", member('\x08', "no terminator").substr(0, 23), std::nullopt},
        {"trailer cut short", member('\x00').substr(0, 27), std::nullopt},
        {"bytes after the last member", member('\x00') + '\0', std::nullopt},
        {"not gzip", "hello", std::nullopt},
        {"empty file", "", std::nullopt},
    };
    for (const auto& [what, file, expected] : cases) {
        EXPECT_EQ(gunzip(file), expected) << what;
    }
}

} // namespace
} // namespace corvandell::git
