// The smart-HTTP exchanges on hand-made replies: the pkt-line lengths the reader accepts
// and refuses, which advertised line is the tip, and how the upload-pack reply is
// unwrapped or refused. (The request's exact bytes are checked in the clone tests.)
#include "webgames/GitProtocol.hpp"

#include "webgames/PktLine.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace corvandell::git {
namespace {

const std::string kTip = "0123456789abcdef0123456789abcdef01234567";

const auto pkt = [](std::string_view payload) { return pkt_line_encode(payload); };

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

TEST(GitProtocol, ReadsPktLinesAndRefusesBadLengths) {
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

TEST(GitProtocol, TipIsTheFirstRefLineAfterTheServiceHeader) {
    const std::string service = pkt("# service=git-upload-pack\n") + "0000";
    const std::string upper = "0123456789ABCDEF0123456789ABCDEF01234567";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {service + pkt(kTip + " HEAD" + '\0' + "shallow\n") + pkt(std::string(40, 'f') + " x"), kTip},
        {service + pkt(upper + " HEAD\n"), upper},
        {pkt("#" + kTip) + pkt("g" + kTip.substr(1)) + pkt(kTip.substr(0, 39)) + pkt(kTip), kTip},
        {service, ""},
        {service + "0001" + pkt(kTip), ""},
    };
    for (const auto& [body, tip] : cases) {
        EXPECT_EQ(tip_from_advertisement(body), tip) << body;
    }
}

TEST(GitProtocol, PackComesFromChannelOneAndServerErrorsAreThrown) {
    const std::string shallow = pkt("shallow " + kTip + "\n") + "0000" + pkt("NAK\n");
    const std::vector<std::pair<std::string, std::string>> cases = {
        {shallow + pkt("\2Counting\n") + pkt("\1PA") + pkt("\1CK-data") + pkt("\x7Fignored") + "0000",
         "PACK-data"},
        {pkt("unshallow " + kTip) + pkt("ACK " + kTip) + pkt("") + pkt("\1PACK"), "PACK"},
        {shallow, "no packfile in git response"},
        {pkt("\1PAC"), "no packfile in git response"},
        {pkt("ERR upload-pack: not our ref") + pkt("\1PACK"), "git: upload-pack: not our ref"},
        {pkt("\1PACK") + pkt("\3fatal: out of memory"), "git: fatal: out of memory"},
        {shallow + "0001" + pkt("\1PACK"), "malformed git response"},
    };
    for (const auto& [body, packOrError] : cases) {
        try {
            EXPECT_EQ(pack_from_response(body), packOrError);
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(error.what(), packOrError);
        }
    }
}

} // namespace
} // namespace corvandell::git
