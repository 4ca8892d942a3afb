// Delta application: each hand-written delta reaches one rule of the format or one of the
// bounds checks that keep a hostile delta from reading or writing out of range.
#include "webgames/Delta.hpp"

#include "support/PackWriter.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell::git {
namespace {

std::string sizes(std::size_t sourceSize, std::size_t targetSize) {
    return test::delta_varint(sourceSize) + test::delta_varint(targetSize);
}

TEST(Delta, AppliesCopiesAndInsertsAndRejectsEveryMalformedDelta) {
    const std::string base = "0123456789";
    const std::string big(0x10000 + 5, 'b');
    struct Case {
        const char* what;
        std::string base;
        std::string delta;
        std::optional<std::string> expected;
    };
    const std::vector<Case> cases = {
        {"copy, insert, copy", base, sizes(10, 8) + "\x91\x02\x03" + "\x02xy" + "\x90\x03", "234xy012"},
        {"all four offset bytes", base, sizes(10, 1) + std::string("\x9F\x09\x00\x00\x00\x01", 6), "9"},
        {"empty result", "", sizes(0, 0), ""},
        {"copy size 0 means 65536", big, sizes(big.size(), 0x10000) + "\x80", std::string(0x10000, 'b')},
        {"source size differs from the base", base, sizes(9, 1) + "\x01x", std::nullopt},
        {"opcode 0 is reserved", base, sizes(10, 1) + std::string("\x00\x01x", 3), std::nullopt},
        {"copy past the base", base, sizes(10, 2) + "\x91\x09\x02", std::nullopt},
        {"copy offset near 2^32", base, sizes(10, 1) + "\x9F\xFF\xFF\xFF\xFF\x01", std::nullopt},
        {"copy bytes missing", base, sizes(10, 1) + "\x91\x01", std::nullopt},
        {"insert past the delta", base, sizes(10, 3) + "\x03xy", std::nullopt},
        {"result shorter than target", base, sizes(10, 3) + "\x02xy", std::nullopt},
        {"result longer than target", base, sizes(10, 1) + "\x02xy", std::nullopt},
        {"truncated size number", base, "\x8A", std::nullopt},
        {"size number wider than 64 bits", base, std::string(10, '\xFF') + "\x01", std::nullopt},
        {"target the opcodes cannot fill", base, sizes(10, 1ULL << 60) + "\x90\x0A", std::nullopt},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(apply_delta(c.base, c.delta), c.expected) << c.what;
    }
}

} // namespace
} // namespace corvandell::git
