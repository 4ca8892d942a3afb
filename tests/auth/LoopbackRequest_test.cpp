#include "auth/LoopbackRequest.hpp"

#include <gtest/gtest.h>

namespace corvandell {
namespace {

using State = LoopbackRequestState;

TEST(LoopbackRequest, JudgesWhatHasArrivedSoFar) {
    const std::string browser = "GET /deliver?access_token=a HTTP/1.1\r\nHost: 127.0.0.1:38517\r\n"
                                "User-Agent: test\r\n\r\n";
    const struct {
        const char* name;
        std::string received;
        State state;
        std::string target;
    } cases[] = {
        {"nothing yet", "", State::NeedMore, ""},
        {"line without headers end", "GET /x HTTP/1.1\r\nHost: a\r\n", State::NeedMore, ""},
        {"a browser's request", browser, State::Complete, "/deliver?access_token=a"},
        {"a body after the head is ignored", "GET /a HTTP/1.1\r\n\r\nrest", State::Complete, "/a"},
        {"another method", "POST / HTTP/1.1\r\n\r\n", State::Malformed, ""},
        {"another method shows early", "PUT", State::Malformed, ""},
        {"binary noise", std::string("\x16\x03\x01\x02\x00", 5), State::Malformed, ""},
        {"target not absolute", "GET x HTTP/1.1\r\n\r\n", State::Malformed, ""},
        {"wrong version", "GET / HTTP/2.0\r\n\r\n", State::Malformed, ""},
        {"control byte in the target", std::string("GET /a\x01 HTTP/1.1\r\n\r\n"), State::Malformed, ""},
        {"a bad line is judged before the head ends", "GET nope HTTP/1.1\r\nHost: a", State::Malformed, ""},
    };
    for (const auto& c : cases) {
        const LoopbackRequest request = readLoopbackRequest(c.received);
        EXPECT_EQ(request.state, c.state) << c.name;
        EXPECT_EQ(request.target, c.target) << c.name;
    }
}

TEST(LoopbackRequest, TheHeadMustEndWithinEightKibibytes) {
    const std::string line = "GET /x HTTP/1.1\r\n";
    const std::string end = "\r\n";
    const auto withHeaderTo = [&](std::size_t total) {
        const std::string header = "X: ";
        return line + header + std::string(total - line.size() - header.size() - 2 - end.size(), 'a') +
               "\r\n" + end;
    };
    EXPECT_EQ(readLoopbackRequest(withHeaderTo(kMaxLoopbackRequestBytes)).state, State::Complete);
    EXPECT_EQ(readLoopbackRequest(withHeaderTo(kMaxLoopbackRequestBytes + 1)).state, State::TooLarge);
    // A head still open at the limit will never fit.
    const std::string open = line + std::string(kMaxLoopbackRequestBytes - line.size(), 'h');
    EXPECT_EQ(readLoopbackRequest(open).state, State::TooLarge);
    EXPECT_EQ(readLoopbackRequest(open.substr(0, open.size() - 1)).state, State::NeedMore);
    // A request line longer than the limit.
    EXPECT_EQ(readLoopbackRequest("GET /" + std::string(kMaxLoopbackRequestBytes, 'a')).state,
              State::TooLarge);
}

TEST(LoopbackRequest, AnswersWithTheSuccessPageOnlyWhenAnAccessTokenCame) {
    const struct {
        const char* target;
        bool hasTokens;
        const char* pageText;
    } cases[] = {
        {"/deliver?access_token=a%2Bb&refresh_token=r", true, "You are signed in."},
        {"/?access_token=a", true, "You can close this tab and return to the Corvandell app."},
        {"/", false, "Completing Corvandell sign-in..."},
        {"/deliver?refresh_token=r", false, "No sign-in data found at this address."},
        {"/favicon.ico", false, "window.location.replace('/deliver?' + fragment)"},
    };
    for (const auto& c : cases) {
        const LoopbackAnswer answer = answerLoopbackRequest(c.target);
        EXPECT_EQ(answer.hasTokens, c.hasTokens) << c.target;
        EXPECT_NE(answer.reply.find(c.pageText), std::string::npos) << c.target;
        EXPECT_NE(answer.reply.find("<title>Corvandell sign-in</title>"), std::string::npos) << c.target;
    }
    const LoopbackAnswer answer = answerLoopbackRequest("/deliver?access_token=a%2Bb&refresh_token=r");
    EXPECT_EQ(answer.tokens.accessToken, "a+b");
    EXPECT_EQ(answer.tokens.refreshToken, "r");
}

TEST(LoopbackRequest, TheReplyDeclaresItsBodyLengthAndCloses) {
    for (const char* target : {"/", "/?access_token=a"}) {
        const std::string reply = answerLoopbackRequest(target).reply;
        const std::string head =
            "HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=utf-8\r\nContent-Length: ";
        ASSERT_TRUE(reply.starts_with(head)) << target;
        const std::size_t headEnd = reply.find("\r\n\r\n");
        ASSERT_NE(headEnd, std::string::npos);
        const std::string length = reply.substr(head.size(), reply.find("\r\n", head.size()) - head.size());
        EXPECT_EQ(std::stoul(length), reply.size() - headEnd - 4) << target;
        EXPECT_NE(reply.find("\r\nConnection: close\r\n\r\n"), std::string::npos) << target;
    }
}

} // namespace
} // namespace corvandell
