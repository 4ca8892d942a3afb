// The chat transcript as the chat window shows it, grown one service page at a time.
//
// The window asks the service for the newest messages every few seconds and after every
// send, and the pages overlap. Each page is the service's order, so appending, in page
// order, only the messages whose ids were never shown keeps the transcript free of
// duplicates and in the order the service holds; an older page arriving late adds nothing.
// A heading line opens each day, so the times on the message lines can stay short.
#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "api/ServiceRecords.hpp"

namespace corvandell {

// "--- text ---" with the edit control's line end.
std::string transcriptHeading(std::string_view text);

// "[HH:MM] sender: content", the content's own line ends made the edit control's.
std::string transcriptLine(const ChatMessage& message);

class Transcript {
public:
    // The text to append for the messages of `page` not seen before; remembers them.
    std::string merge(const std::vector<ChatMessage>& page);
    bool hasSeen(const std::string& messageId) const { return seenIds_.contains(messageId); }
    std::size_t messageCount() const noexcept { return seenIds_.size(); }

private:
    std::unordered_set<std::string> seenIds_;
    std::string lastDay_;
};

} // namespace corvandell
