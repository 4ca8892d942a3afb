// The smart-HTTP exchanges on hand-made replies: which advertised line is the tip, the exact
// request bytes, and how the upload-pack reply is unwrapped or refused.
#include "webgames/GitProtocol.hpp"

#include "webgames/PktLine.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace corvandell::git {
namespace {

const std::string kTip = "0123456789abcdef0123456789abcdef01234567";

std::string pkt(std::string_view payload) {
    return pkt_line_encode(payload);
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

TEST(GitProtocol, RequestWantsTheTipAtDepthOneWithoutHaves) {
    EXPECT_EQ(upload_pack_request(kTip), "0063want " + kTip +
                                             " side-band-64k ofs-delta shallow agent=corvandell\n" +
                                             "000ddeepen 1\n00000009done\n");
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
