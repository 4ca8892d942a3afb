// Users of the service stand-in for the social and voice tests: fresh accounts per test,
// made friends through the service itself, and a window that only collects what is posted
// to it.
#pragma once

#include <windows.h>

#include "base/Settings.hpp"

#include <string>
#include <vector>

namespace corvandell::test {

struct StandInUser {
    std::string username;
    std::string userId;
    Settings settings;
};

// A new account named `prefix` plus a random suffix (usernames stay under 32 characters).
StandInUser newStandInUser(const std::string& prefix);

// Each asks the other, which the service takes as an accepted request.
void makeFriends(const StandInUser& one, const StandInUser& other);

// A call as that user; returns the body, throws on a failure status.
std::string callAs(const StandInUser& user, const std::string& method, const std::string& path,
                   const std::string& body = "");

// A message-only window: messages posted to it wait in the queue until taken, so code that
// waits for one must not pump messages meanwhile.
class PostBox {
public:
    PostBox();
    PostBox(const PostBox&) = delete;
    PostBox& operator=(const PostBox&) = delete;
    ~PostBox();
    HWND hwnd() const noexcept { return hwnd_; }
    // Takes the first posted `message` waiting, if any.
    bool take(UINT message, MSG& out);

private:
    HWND hwnd_;
};

// Top-level windows of this process with the class name, in no particular order.
std::vector<HWND> windowsOfClass(const wchar_t* className);

} // namespace corvandell::test
