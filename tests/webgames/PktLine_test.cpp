// Pkt-line reading: the lengths the reader must accept and the ones it must refuse. (The
// encoder's frames are checked byte for byte through the upload-pack request.)
#include "webgames/PktLine.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell::git {
namespace {

using Records = std::vector<std::pair<std::string, bool>>;

std::optional<Records> read_all(std::string_view buffer, std::size_t position = 0) {
    const auto lines = pkt_line_read(buffer, position);
    if (!lines) {
        return std::nullopt;
    }
    Records records;
    for (const PktLine& line : *lines) {
        records.emplace_back(line.payload, line.isFlush);
    }
    return records;
}

TEST(PktLine, ReadsRecordsAndRefusesBadLengths) {
    const std::vector<std::pair<std::string, std::optional<Records>>> cases = {
        {"001e# service=git-upload-pack\n00000008ref\n",
         Records{{"# service=git-upload-pack\n", false}, {"", true}, {"ref\n", false}}},
        {"000AUPPER\n000aLower\n", Records{{"UPPER\n", false}, {"Lower\n", false}}},
        {"0004", Records{{"", false}}},
        {"0005x000", Records{{"x", false}}},
        {"", Records{}},
        {"0001", std::nullopt},
        {"0003", std::nullopt},
        {"0009abc", std::nullopt},
        {"00g5x", std::nullopt},
        {"0005x-005y", std::nullopt},
    };
    for (const auto& [buffer, expected] : cases) {
        EXPECT_EQ(read_all(buffer), expected) << buffer;
    }
    std::size_t position = 3;
    ASSERT_EQ(pkt_line_read("xyz0006ab0000", position)->size(), 2U);
    EXPECT_EQ(position, 13U);
}

} // namespace
} // namespace corvandell::git
