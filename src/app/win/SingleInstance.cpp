#include <windows.h>

#include "app/win/SingleInstance.hpp"

#include <string>
#include <string_view>
#include <system_error>

namespace corvandell::win {

namespace {

// FNV-1a over the UTF-16 units: small, stable across runs and builds, and collisions
// between one user's folders are not a concern.
std::uint64_t fnv1a(std::wstring_view text) {
    std::uint64_t hash = 14695981039346656037ull;
    for (const wchar_t unit : text) {
        hash ^= static_cast<std::uint64_t>(unit);
        hash *= 1099511628211ull;
    }
    return hash;
}

std::wstring hexOf(std::uint64_t value) {
    static constexpr wchar_t kDigits[] = L"0123456789abcdef";
    std::wstring text(16, L'0');
    for (auto digit = text.rbegin(); digit != text.rend(); ++digit, value >>= 4) {
        *digit = kDigits[value & 0x0F];
    }
    return text;
}

} // namespace

std::uint64_t dataFolderKey(const std::filesystem::path& dataFolder) {
    std::error_code error;
    std::filesystem::path absolute = std::filesystem::absolute(dataFolder, error);
    std::wstring text = (error ? dataFolder : absolute).lexically_normal().make_preferred().wstring();
    while (text.size() > 3 && text.back() == L'\\') {
        text.pop_back();
    }
    // Windows folder names ignore letter case; the system's own upper-casing agrees with it.
    CharUpperBuffW(text.data(), static_cast<DWORD>(text.size()));
    return fnv1a(text);
}

UINT showRunningClientMessage() noexcept {
    static const UINT message = RegisterWindowMessageW(L"Corvandell.ShowRunningClient");
    return message;
}

SingleInstance::SingleInstance(const std::filesystem::path& dataFolder) : key_(dataFolderKey(dataFolder)) {
    // "Local\": one client per folder in each log-on session.
    const std::wstring name = L"Local\\Corvandell-" + hexOf(key_);
    mutex_.reset(CreateMutexW(nullptr, FALSE, name.c_str()));
    // Without a mutex at all the client still starts: refusing would lock the user out.
    isFirst_ = !(mutex_ && GetLastError() == ERROR_ALREADY_EXISTS);
}

void SingleInstance::activateRunningClient() const noexcept {
    AllowSetForegroundWindow(ASFW_ANY);
    PostMessageW(HWND_BROADCAST, showRunningClientMessage(), 0, static_cast<LPARAM>(key_));
}

} // namespace corvandell::win
