// The host and path buffers are sized for any address a user could paste (WinHTTP itself
// caps host names at 256 characters); a longer path fails as "Invalid URL" instead of being
// cut short.
#include <windows.h>
#include <winhttp.h>

#include "base/win/WinHttpUrl.hpp"

#include <stdexcept>
#include <vector>

namespace corvandell::win {

namespace {

constexpr DWORD kHostCapacity = 256;
constexpr DWORD kPathCapacity = 4096;

} // namespace

SplitUrl splitUrl(const std::wstring& url) {
    std::vector<wchar_t> host(kHostCapacity, L'\0');
    std::vector<wchar_t> path(kPathCapacity, L'\0');
    std::vector<wchar_t> extra(kPathCapacity, L'\0');
    URL_COMPONENTS parts{};
    parts.dwStructSize = sizeof(parts);
    parts.lpszHostName = host.data();
    parts.dwHostNameLength = kHostCapacity;
    parts.lpszUrlPath = path.data();
    parts.dwUrlPathLength = kPathCapacity;
    parts.lpszExtraInfo = extra.data();
    parts.dwExtraInfoLength = kPathCapacity;
    parts.dwSchemeLength = 1;
    if (!WinHttpCrackUrl(url.c_str(), static_cast<DWORD>(url.size()), 0, &parts)) {
        throw std::runtime_error("Invalid URL");
    }
    SplitUrl split;
    split.host.assign(host.data(), parts.dwHostNameLength);
    split.port = parts.nPort;
    split.isHttps = parts.nScheme == INTERNET_SCHEME_HTTPS;
    split.pathAndQuery.assign(path.data(), parts.dwUrlPathLength);
    split.pathAndQuery.append(extra.data(), parts.dwExtraInfoLength);
    return split;
}

} // namespace corvandell::win
