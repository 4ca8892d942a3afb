// Splitting a service or repository-host address into the pieces WinHTTP connects with.
#pragma once

#include <string>

namespace corvandell::win {

struct SplitUrl {
    std::wstring host;
    unsigned short port = 0;
    bool isHttps = false;
    std::wstring pathAndQuery;
};

// Throws std::runtime_error("Invalid URL") when WinHTTP cannot split the address.
SplitUrl splitUrl(const std::wstring& url);

} // namespace corvandell::win
