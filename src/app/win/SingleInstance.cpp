#include <windows.h>

#include "app/win/SingleInstance.hpp"

#include <string>
#include <string_view>
#include <system_error>

namespace corvandell::win {

namespace {

constexpr wchar_t kBeaconClass[] = L"CorvandellInstanceBeacon";
// The classes of the windows a second start brings forward, in order of preference.
constexpr wchar_t kMainWindowClass[] = L"CorvandellClientWindow";
constexpr wchar_t kSignInClass[] = L"CorvandellSignIn";
constexpr UINT kComeForward = WM_APP + 1; // the beacon's only message
constexpr DWORD kPollMs = 50;
constexpr UINT_PTR kRetryTimerId = 1;
constexpr UINT kRetryMs = 100;
constexpr ULONGLONG kRetryLimitMs = 30000;
constexpr wchar_t kRetryDeadline[] = L"CorvandellRetryDeadline";

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

struct ThreadWindowSearch {
    const wchar_t* className;
    HWND found = nullptr;
};

BOOL CALLBACK matchClass(HWND window, LPARAM lParam) noexcept {
    auto* search = reinterpret_cast<ThreadWindowSearch*>(lParam);
    wchar_t name[64] = {};
    GetClassNameW(window, name, 64);
    if (lstrcmpW(name, search->className) != 0) {
        return TRUE;
    }
    search->found = window;
    return FALSE;
}

HWND threadWindowOfClass(const wchar_t* className) noexcept {
    ThreadWindowSearch search{className};
    EnumThreadWindows(GetCurrentThreadId(), &matchClass, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

void bringForward(HWND window) noexcept {
    ShowWindow(window, IsIconic(window) ? SW_RESTORE : SW_SHOW);
    SetForegroundWindow(window);
}

// True when there was a window to bring forward.
bool bringClientForward(HWND beacon) noexcept {
    // The main window decides for itself how it comes back from the tray.
    if (HWND main = threadWindowOfClass(kMainWindowClass); main != nullptr) {
        SendMessageW(main, showRunningClientMessage(), 0, GetWindowLongPtrW(beacon, GWLP_USERDATA));
        return true;
    }
    if (HWND signIn = threadWindowOfClass(kSignInClass); signIn != nullptr) {
        bringForward(signIn);
        return true;
    }
    return false;
}

LRESULT CALLBACK beaconProcedure(HWND beacon, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    switch (message) {
    case kComeForward:
        // No window yet: start-up is still reading files. The request is kept until a
        // window appears, so a client started minimised still comes forward.
        if (!bringClientForward(beacon)) {
            SetTimer(beacon, kRetryTimerId, kRetryMs, nullptr);
            SetPropW(beacon, kRetryDeadline,
                     reinterpret_cast<HANDLE>(static_cast<UINT_PTR>(GetTickCount64() + kRetryLimitMs)));
        }
        return 0;
    case WM_TIMER:
        if (wParam == kRetryTimerId && (bringClientForward(beacon) ||
                                        GetTickCount64() > static_cast<ULONGLONG>(reinterpret_cast<UINT_PTR>(
                                                               GetPropW(beacon, kRetryDeadline))))) {
            KillTimer(beacon, kRetryTimerId);
        }
        return 0;
    case WM_NCDESTROY:
        RemovePropW(beacon, kRetryDeadline);
        break;
    default:
        break;
    }
    return DefWindowProcW(beacon, message, wParam, lParam);
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
    mutex_.reset(CreateMutexW(nullptr, TRUE, name.c_str()));
    // Without a mutex at all the client still starts: refusing would lock the user out.
    isFirst_ = !(mutex_ && GetLastError() == ERROR_ALREADY_EXISTS);
    ownsMutex_ = mutex_ && isFirst_;
    if (isFirst_) {
        raiseBeacon();
    }
}

SingleInstance::~SingleInstance() {
    if (beacon_ != nullptr) {
        DestroyWindow(beacon_);
    }
    if (ownsMutex_) {
        ReleaseMutex(mutex_.get());
    }
}

void SingleInstance::raiseBeacon() noexcept {
    const HINSTANCE instance = GetModuleHandleW(nullptr);
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.lpfnWndProc = &beaconProcedure;
    windowClass.hInstance = instance;
    windowClass.lpszClassName = kBeaconClass;
    RegisterClassExW(&windowClass); // fails harmlessly when already registered
    beacon_ = CreateWindowExW(0, kBeaconClass, hexOf(key_).c_str(), 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                              instance, nullptr);
    if (beacon_ != nullptr) {
        SetWindowLongPtrW(beacon_, GWLP_USERDATA, static_cast<LONG_PTR>(key_));
    }
}

bool SingleInstance::handOverToRunningClient(DWORD timeoutMs) {
    const std::wstring beaconName = hexOf(key_);
    const ULONGLONG deadline = GetTickCount64() + timeoutMs;
    for (;;) {
        // The first client raises its beacon right after claiming the folder, but this
        // process may look in between, so it looks again until the deadline.
        if (HWND beacon = FindWindowExW(HWND_MESSAGE, nullptr, kBeaconClass, beaconName.c_str());
            beacon != nullptr) {
            DWORD processId = 0;
            GetWindowThreadProcessId(beacon, &processId);
            AllowSetForegroundWindow(processId);
            PostMessageW(beacon, kComeForward, 0, 0);
            return true;
        }
        // An owner that ended leaves the mutex abandoned, and this process takes it over.
        if (mutex_) {
            const DWORD wait = WaitForSingleObject(mutex_.get(), 0);
            if (wait == WAIT_OBJECT_0 || wait == WAIT_ABANDONED) {
                isFirst_ = true;
                ownsMutex_ = true;
                raiseBeacon();
                return false;
            }
        }
        if (GetTickCount64() >= deadline) {
            return true; // a client that does not answer still holds the folder
        }
        Sleep(kPollMs);
    }
}

} // namespace corvandell::win
