#include "voice/MessageAssembler.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace corvandell::voice {
namespace {

struct Piece {
    PieceKind kind;
    std::string bytes;
};

struct Outcome {
    AssembledKind kind;
    std::string message; // for Binary
    bool operator==(const Outcome&) const = default;
};

std::vector<Outcome> feed(MessageAssembler& assembler, const std::vector<Piece>& pieces) {
    std::vector<Outcome> outcomes;
    for (const auto& [kind, bytes] : pieces) {
        const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
        const AssembledKind assembled = assembler.add(kind, {data, bytes.size()});
        std::string message;
        if (assembled == AssembledKind::Binary) {
            message.assign(reinterpret_cast<const char*>(assembler.message().data()),
                           assembler.message().size());
        }
        outcomes.push_back({assembled, message});
    }
    return outcomes;
}

using enum PieceKind;
constexpr auto kMore = AssembledKind::Incomplete;
constexpr auto kBinary = AssembledKind::Binary;

TEST(MessageAssembler, PiecesBecomeWholeMessagesAndNothingLeaksIntoTheNext) {
    const struct {
        const char* what;
        std::vector<Piece> pieces;
        std::vector<Outcome> outcomes;
    } cases[] = {
        {"fragments joined in order",
         {{BinaryFragment, "ab"}, {BinaryFragment, "cd"}, {BinaryMessage, "e"}, {BinaryMessage, "next"}},
         {{kMore, ""}, {kMore, ""}, {kBinary, "abcde"}, {kBinary, "next"}}},
        {"an empty last piece ends the message",
         {{BinaryFragment, "xyz"}, {BinaryMessage, ""}},
         {{kMore, ""}, {kBinary, "xyz"}}},
        {"text is reported but never kept",
         {{TextFragment, "he"}, {TextMessage, "llo"}, {BinaryMessage, "pcm"}},
         {{kMore, ""}, {AssembledKind::Text, ""}, {kBinary, "pcm"}}},
        {"close ends whatever was under way",
         {{BinaryFragment, "half"}, {Close, ""}, {BinaryMessage, "after"}},
         {{kMore, ""}, {AssembledKind::Close, ""}, {kBinary, "after"}}},
        {"exactly the limit fits",
         {{BinaryFragment, "12345"}, {BinaryMessage, "678"}},
         {{kMore, ""}, {kBinary, "12345678"}}},
        {"one byte over drops the whole message, and the next one is whole again",
         {{BinaryFragment, "12345"}, {BinaryFragment, "6789"}, {BinaryMessage, "0"}, {BinaryMessage, "ok"}},
         {{kMore, ""}, {kMore, ""}, {AssembledKind::Oversized, ""}, {kBinary, "ok"}}},
    };
    for (const auto& [what, pieces, outcomes] : cases) {
        MessageAssembler assembler(8);
        EXPECT_EQ(feed(assembler, pieces), outcomes) << what;
    }
}

} // namespace
} // namespace corvandell::voice
