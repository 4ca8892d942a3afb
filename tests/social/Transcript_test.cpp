#include "social/Transcript.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell {
namespace {

ChatMessage message(const std::string& id, const std::string& sender, const std::string& content,
                    const std::string& sentAt = "2026-11-25T09:30:00Z", bool isDeleted = false) {
    return {id, "uid-" + sender, sender, content, sentAt, isDeleted};
}

TEST(Transcript, EachMessageIsOneLineWithItsTimeSenderAndContent) {
    const struct {
        ChatMessage message;
        std::string line;
    } cases[] = {
        {message("2", "bruno", "two\nlines\r\nand\rthree"),
         "[09:30] bruno: two\r\nlines\r\nand\r\nthree\r\n"},
        {message("3", "alice", "", "2026-11-25T23:59:59Z", true), "[23:59] alice: (message deleted)\r\n"},
        {message("4", "", "who?", ""), "?: who?\r\n"},
        {message("5", "chen", "ünïcödé \"quoted\"", "2026-11"), "chen: ünïcödé \"quoted\"\r\n"},
    };
    for (const auto& [chatMessage, line] : cases) {
        EXPECT_EQ(transcriptLine(chatMessage), line) << chatMessage.id;
    }
    EXPECT_EQ(transcriptHeading("2026-11-25"), "--- 2026-11-25 ---\r\n");
}

TEST(Transcript, AHeadingOpensEveryDayAndOnlyWhenTheDayChanges) {
    Transcript transcript;
    EXPECT_EQ(transcript.merge({message("1", "alice", "late", "2026-11-24T23:58:00Z"),
                                message("2", "bruno", "later", "2026-11-24T23:59:00Z"),
                                message("3", "alice", "morning", "2026-11-25T00:01:00Z")}),
              "--- 2026-11-24 ---\r\n"
              "[23:58] alice: late\r\n"
              "[23:59] bruno: later\r\n"
              "--- 2026-11-25 ---\r\n"
              "[00:01] alice: morning\r\n");
    // The next page continues the same day: no second heading.
    EXPECT_EQ(transcript.merge({message("4", "chen", "hi", "2026-11-25T08:00:00Z")}), "[08:00] chen: hi\r\n");
}

TEST(Transcript, OverlappingPagesAddOnlyUnseenMessagesInPageOrder) {
    const auto a = message("a", "alice", "one");
    const auto b = message("b", "bruno", "two");
    const auto c = message("c", "alice", "three");
    const auto d = message("d", "chen", "four");
    const auto e = message("e", "bruno", "five");
    const struct {
        const char* what;
        std::vector<ChatMessage> page;
        std::string appended;
    } steps[] = {
        {"first load",
         {a, b, c},
         "--- 2026-11-25 ---\r\n[09:30] alice: one\r\n[09:30] bruno: two\r\n"
         "[09:30] alice: three\r\n"},
        {"same page again", {a, b, c}, ""},
        {"a newer window", {b, c, d, e}, "[09:30] chen: four\r\n[09:30] bruno: five\r\n"},
        {"an older page arriving late", {a, b, c}, ""},
        {"a message without an id is never shown", {message("", "eve", "ghost")}, ""},
    };
    Transcript transcript;
    for (const auto& [what, page, appended] : steps) {
        EXPECT_EQ(transcript.merge(page), appended) << what;
    }
    EXPECT_EQ(transcript.messageCount(), 5u);
    EXPECT_TRUE(transcript.hasSeen("d"));
}

} // namespace
} // namespace corvandell
