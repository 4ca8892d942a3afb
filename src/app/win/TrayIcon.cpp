#include <windows.h>

#include <shellapi.h>

#include "app/win/TrayIcon.hpp"

#include <algorithm>

namespace corvandell::win {
namespace {

constexpr UINT kIconId = 1;

template <size_t N> void copyText(wchar_t (&target)[N], std::wstring_view text) noexcept {
    const size_t length = std::min(text.size(), N - 1);
    std::copy_n(text.data(), length, target);
    target[length] = L'\0';
}

NOTIFYICONDATAW baseData(HWND owner) noexcept {
    NOTIFYICONDATAW data{};
    data.cbSize = sizeof(data);
    data.hWnd = owner;
    data.uID = kIconId;
    return data;
}

} // namespace

bool TrayIcon::add(HWND owner, UINT callbackMessage, HICON icon, std::wstring_view tip) noexcept {
    remove();
    NOTIFYICONDATAW data = baseData(owner);
    data.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP;
    data.uCallbackMessage = callbackMessage;
    data.hIcon = icon;
    copyText(data.szTip, tip);
    owner_ = owner;
    added_ = Shell_NotifyIconW(NIM_ADD, &data) != FALSE;
    return added_;
}

bool TrayIcon::showBalloon(std::wstring_view title, std::wstring_view text) noexcept {
    if (!added_) {
        return false;
    }
    NOTIFYICONDATAW data = baseData(owner_);
    data.uFlags = NIF_INFO;
    data.dwInfoFlags = NIIF_INFO;
    copyText(data.szInfoTitle, title);
    copyText(data.szInfo, text);
    return Shell_NotifyIconW(NIM_MODIFY, &data) != FALSE;
}

void TrayIcon::remove() noexcept {
    if (!added_) {
        return;
    }
    NOTIFYICONDATAW data = baseData(owner_);
    Shell_NotifyIconW(NIM_DELETE, &data);
    added_ = false;
}

} // namespace corvandell::win
