#include "support/win/SocialUsers.hpp"

#include "api/JsonText.hpp"
#include "support/win/ServiceStandIn.hpp"

#include <random>

namespace corvandell::test {

StandInUser newStandInUser(const std::string& prefix) {
    const std::string username = prefix + "-" + std::to_string(std::random_device()() % 1000000);
    StandInUser user;
    user.username = username;
    user.settings = win::signedInSettings(username);
    user.userId = readString(
        win::callStandIn("POST", "/__test/session", "{\"username\":\"" + username + "\"}"), "userId");
    return user;
}

std::string callAs(const StandInUser& user, const std::string& method, const std::string& path,
                   const std::string& body) {
    return win::ProbeClient(&user.settings).request(method, path, body);
}

void makeFriends(const StandInUser& one, const StandInUser& other) {
    callAs(one, "POST", "/api/v1/me/friend-requests", "{\"toUserId\":\"" + other.userId + "\"}");
    callAs(other, "POST", "/api/v1/me/friend-requests", "{\"toUserId\":\"" + one.userId + "\"}");
}

PostBox::PostBox()
    : hwnd_(CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr)) {}

PostBox::~PostBox() {
    DestroyWindow(hwnd_);
}

bool PostBox::take(UINT message, MSG& out) {
    return PeekMessageW(&out, hwnd_, message, message, PM_REMOVE) != FALSE;
}

std::vector<HWND> windowsOfClass(const wchar_t* className) {
    struct Search {
        const wchar_t* className;
        std::vector<HWND> found;
    } search{className, {}};
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND hwnd, LPARAM parameter) -> BOOL {
            auto* state = reinterpret_cast<Search*>(parameter);
            wchar_t name[128] = {};
            GetClassNameW(hwnd, name, 128);
            if (std::wstring(name) == state->className) {
                state->found.push_back(hwnd);
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

} // namespace corvandell::test
