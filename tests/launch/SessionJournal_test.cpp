#include "launch/SessionJournal.hpp"

#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <string>

namespace corvandell {
namespace {

SessionJournalRecord sample() {
    return SessionJournalRecord{.launchId = "7d2f-11",
                                .isExternal = true,
                                .processId = 4294967295u,
                                .processCreated = 133'700'000'123'456'789ULL,
                                .rowKey = "epic:Finch:\"Lantern\"",
                                .title = "Lantern \\ Harbor \xc3\xa9\n2"};
}

TEST(SessionJournal, ARecordReadsBackExactlyAsWritten) {
    const SessionJournalRecord cases[] = {
        sample(),
        SessionJournalRecord{.launchId = "a", .processId = 8, .processCreated = 1},
    };
    for (const SessionJournalRecord& record : cases) {
        const auto read = parseSessionJournal(formatSessionJournal(record));
        ASSERT_TRUE(read.has_value()) << formatSessionJournal(record);
        EXPECT_EQ(*read, record);
    }
}

TEST(SessionJournal, DamagedTextNeverNamesASessionThatCannotBeFound) {
    const std::string good = formatSessionJournal(sample());
    const struct {
        std::string text;
        bool isSession;
    } cases[] = {
        {"", false},
        {good.substr(0, good.find("\"processId\"")), false}, // cut before the process
        {R"({"launchId":"x","processId":0,"processCreated":5})", false},
        {R"({"launchId":"x","processId":4294967296,"processCreated":5})", false},
        {R"({"launchId":"x","processId":12,"processCreated":"soon"})", false},
        {"\xff\xfe garbage {\"launchId\":", false},
        // Key and title are only for the status line: a session without them is still ended.
        {R"({"launchId":"x","processId":12,"processCreated":5,"rowKey":)", true},
        {good + "trailing", true},
    };
    for (const auto& [text, isSession] : cases) {
        EXPECT_EQ(parseSessionJournal(text).has_value(), isSession) << text;
    }
}

TEST(SessionJournal, TheFileIsReplacedWholeAndClearingItLeavesNoSession) {
    test::TempFolder folder;
    const auto file = sessionJournalIn(folder.path());
    EXPECT_FALSE(loadSessionJournal(file).has_value());
    saveSessionJournal(file, sample());
    SessionJournalRecord second = sample();
    second.processId = 77;
    saveSessionJournal(file, second);
    EXPECT_EQ(loadSessionJournal(file), second);
    clearSessionJournal(file);
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_FALSE(loadSessionJournal(file).has_value());
    clearSessionJournal(file); // nothing there: no harm

    folder.writeFile("session.json", "{\"launchId\":\"only half");
    EXPECT_FALSE(loadSessionJournal(file).has_value());
}

} // namespace
} // namespace corvandell
