#include <windows.h>

#include <propsys.h>

#include "base/win/WideText.hpp"
#include "webgames/win/WebGameTaskbarWindow.hpp"

#include <cstring>

// shell32 exports it, but mingw-w64's headers do not declare it.
extern "C" DECLSPEC_IMPORT HRESULT WINAPI SHGetPropertyStoreForWindow(HWND window, REFIID iid, void** store);

namespace corvandell::win {
namespace {

constexpr DWORD kStyle = WS_OVERLAPPEDWINDOW | WS_MINIMIZE;
constexpr DWORD kExStyle = WS_EX_APPWINDOW;
constexpr int kWidth = 320;
constexpr int kHeight = 200;
// PKEY_AppUserModel_ID, spelt out so that no translation unit has to define GUIDs.
constexpr PROPERTYKEY kAppUserModelId{
    {0x9F4C2855, 0x9F79, 0x4B39, {0xA8, 0xD0, 0xE1, 0xD4, 0x2D, 0xE1, 0xD5, 0xF3}}, 5};

} // namespace

std::wstring WebGameTaskbarWindow::appUserModelIdFor(const std::string& gameKey) {
    return L"Corvandell.WebGame." + widen(gameKey);
}

WebGameTaskbarWindow* WebGameTaskbarWindow::open(HINSTANCE instance, const std::wstring& title,
                                                 const std::string& gameKey, UniqueIcon icon,
                                                 TaskbarNotices notices) {
    if (!registerWindowClass(instance, kClassName, &Window::windowProcedure,
                             reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1))) {
        return nullptr;
    }
    auto* window = new WebGameTaskbarWindow(std::move(icon), notices);
    // No owner: an owned window gets no taskbar button of its own.
    if (!createSelfDeleting(window, kExStyle, kClassName, title.c_str(), kWidth, kHeight, nullptr, instance,
                            kStyle)) {
        return nullptr;
    }
    if (window->icon_) {
        SendMessageW(window->hwnd_, WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(window->icon_.get()));
        SendMessageW(window->hwnd_, WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(window->icon_.get()));
    }
    // Before the button exists, so the taskbar groups it under the game's id from the start.
    window->hasAppUserModelId_ = window->setAppUserModelId(appUserModelIdFor(gameKey));
    ShowWindow(window->hwnd_, SW_SHOWMINNOACTIVE);
    return window;
}

bool WebGameTaskbarWindow::setAppUserModelId(const std::wstring& id) noexcept {
    IPropertyStore* store = nullptr;
    if (FAILED(SHGetPropertyStoreForWindow(hwnd_, IID_IPropertyStore, reinterpret_cast<void**>(&store)))) {
        return false;
    }
    PROPVARIANT value{};
    const size_t bytes = (id.size() + 1) * sizeof(wchar_t);
    value.pwszVal = static_cast<LPWSTR>(CoTaskMemAlloc(bytes));
    bool isSet = false;
    if (value.pwszVal != nullptr) {
        value.vt = VT_LPWSTR;
        std::memcpy(value.pwszVal, id.c_str(), bytes);
        isSet = SUCCEEDED(store->SetValue(kAppUserModelId, value)) && SUCCEEDED(store->Commit());
        PropVariantClear(&value);
    }
    store->Release();
    return isSet;
}

LRESULT WebGameTaskbarWindow::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    switch (message) {
    case WM_SYSCOMMAND:
        // The game is the browser's full-screen window; this one has nothing to show.
        if ((wParam & 0xFFF0) == SC_RESTORE || (wParam & 0xFFF0) == SC_MAXIMIZE) {
            return 0;
        }
        break;
    case WM_QUERYOPEN:
        return FALSE;
    case WM_CLOSE:
        // The game ends, and with it this window, when the main window has stopped it.
        if (notices_.mainWindow != nullptr) {
            PostMessageW(notices_.mainWindow, notices_.stopMessage, 0, 0);
        }
        return 0;
    case WM_DESTROY:
        if (notices_.mainWindow != nullptr) {
            PostMessageW(notices_.mainWindow, notices_.closedMessage, notices_.closedKind,
                         reinterpret_cast<LPARAM>(hwnd_));
        }
        return 0;
    default:
        break;
    }
    return DefWindowProcW(hwnd_, message, wParam, lParam);
}

} // namespace corvandell::win
