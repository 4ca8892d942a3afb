#include <windows.h>

#include "base/win/WideText.hpp"

#include <limits>

namespace corvandell::win {

std::wstring widen(std::string_view utf8) {
    if (utf8.empty() || utf8.size() > static_cast<size_t>(std::numeric_limits<int>::max())) {
        return {};
    }
    const int length = static_cast<int>(utf8.size());
    const int needed = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0);
    if (needed <= 0) {
        return {};
    }
    std::wstring wide(static_cast<size_t>(needed), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, wide.data(), needed);
    return wide;
}

std::string narrow(std::wstring_view wide) {
    if (wide.empty() || wide.size() > static_cast<size_t>(std::numeric_limits<int>::max())) {
        return {};
    }
    const int length = static_cast<int>(wide.size());
    const int needed = WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
    if (needed <= 0) {
        return {};
    }
    std::string utf8(static_cast<size_t>(needed), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, utf8.data(), needed, nullptr, nullptr);
    return utf8;
}

} // namespace corvandell::win
