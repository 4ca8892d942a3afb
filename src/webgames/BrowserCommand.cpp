#include "webgames/BrowserCommand.hpp"

#include <algorithm>

namespace corvandell {

namespace {

constexpr wchar_t kQuote = L'"';

std::wstring_view fileName(std::wstring_view path) {
    const auto slash = path.find_last_of(L"\\/");
    return slash == std::wstring_view::npos ? path : path.substr(slash + 1);
}

} // namespace

std::wstring fileUrl(std::wstring_view path) {
    std::wstring url = L"file:///";
    url.reserve(url.size() + path.size());
    for (const wchar_t c : path) {
        switch (c) {
        case L'\\':
            url += L'/';
            break;
        case L' ':
            url += L"%20";
            break;
        case L'#':
            url += L"%23";
            break;
        case L'%':
            url += L"%25";
            break;
        default:
            url += c;
        }
    }
    return url;
}

bool isFirefox(std::wstring_view browserPath) {
    std::wstring name(fileName(browserPath));
    std::transform(name.begin(), name.end(), name.begin(), [](wchar_t c) {
        return (c >= L'A' && c <= L'Z') ? static_cast<wchar_t>(c - L'A' + L'a') : c;
    });
    return name.find(L"firefox") != std::wstring::npos;
}

bool isSafeOnCommandLine(std::wstring_view url) {
    return !url.empty() && url.front() != L'-' && std::none_of(url.begin(), url.end(), [](wchar_t c) {
        return c <= L' ' || c == 0x7f || c == kQuote || (c >= 0x80 && c <= 0x9f) || c == 0x2028 ||
               c == 0x2029;
    });
}

std::wstring browserCommandLine(std::wstring_view browserPath, std::wstring_view targetUrl,
                                std::wstring_view profileFolder) {
    std::wstring line;
    line += kQuote;
    line += browserPath;
    if (isFirefox(browserPath)) {
        line += L"\" -kiosk -new-instance -no-remote -profile \"";
        line += profileFolder;
        line += L"\" \"";
        line += targetUrl;
        line += kQuote;
        return line;
    }
    line += L"\" --app=";
    line += targetUrl;
    line += L" --kiosk --start-fullscreen --no-first-run --no-default-browser-check "
            L"--disable-features=Translate,TranslateUI --disable-pinch --overscroll-history-navigation=0 "
            L"--user-data-dir=\"";
    line += profileFolder;
    line += kQuote;
    return line;
}

} // namespace corvandell
