// One move-only owner for every kind of Windows handle.
//
// Each alias names a traits type that knows the handle type, which values mean "none" and
// how to close it, so a handle is closed exactly once on every path and never copied.
#pragma once

#include <windows.h>

#include <winhttp.h>

#include <utility>

namespace corvandell::win {

template <class Traits> class UniqueHandle {
public:
    using Handle = typename Traits::Handle;

    UniqueHandle() noexcept = default;
    explicit UniqueHandle(Handle handle) noexcept : handle_(handle) {}
    UniqueHandle(const UniqueHandle&) = delete;
    UniqueHandle& operator=(const UniqueHandle&) = delete;
    UniqueHandle(UniqueHandle&& other) noexcept : handle_(other.release()) {}
    UniqueHandle& operator=(UniqueHandle&& other) noexcept {
        reset(other.release());
        return *this;
    }
    ~UniqueHandle() { reset(); }

    Handle get() const noexcept { return handle_; }
    explicit operator bool() const noexcept { return Traits::isValid(handle_); }

    [[nodiscard]] Handle release() noexcept { return std::exchange(handle_, Traits::empty()); }

    void reset(Handle handle = Traits::empty()) noexcept {
        Handle old = std::exchange(handle_, handle);
        if (Traits::isValid(old)) {
            // Closing must not clobber the error code of whatever failed just before.
            const DWORD lastError = GetLastError();
            Traits::close(old);
            SetLastError(lastError);
        }
    }

private:
    Handle handle_ = Traits::empty();
};

struct KernelHandleTraits {
    using Handle = HANDLE;
    static Handle empty() noexcept { return nullptr; }
    static bool isValid(Handle h) noexcept { return h != nullptr && h != INVALID_HANDLE_VALUE; }
    static void close(Handle h) noexcept { CloseHandle(h); }
};

// Handles whose only empty value is null and that one function closes.
template <class HandleType, auto closeFunction> struct NullEmptyTraits {
    using Handle = HandleType;
    static Handle empty() noexcept { return nullptr; }
    static bool isValid(Handle h) noexcept { return h != nullptr; }
    static void close(Handle h) noexcept { closeFunction(h); }
};

// Find handles use INVALID_HANDLE_VALUE for "none".
struct FindHandleTraits {
    using Handle = HANDLE;
    static Handle empty() noexcept { return INVALID_HANDLE_VALUE; }
    static bool isValid(Handle h) noexcept { return h != nullptr && h != INVALID_HANDLE_VALUE; }
    static void close(Handle h) noexcept { FindClose(h); }
};

// Change notifications, like find handles, use INVALID_HANDLE_VALUE for "none".
struct ChangeNotificationTraits {
    using Handle = HANDLE;
    static Handle empty() noexcept { return INVALID_HANDLE_VALUE; }
    static bool isValid(Handle h) noexcept { return h != nullptr && h != INVALID_HANDLE_VALUE; }
    static void close(Handle h) noexcept { FindCloseChangeNotification(h); }
};

using UniqueKernelHandle = UniqueHandle<KernelHandleTraits>;
using UniqueFindHandle = UniqueHandle<FindHandleTraits>;
using UniqueChangeNotification = UniqueHandle<ChangeNotificationTraits>;
using UniqueRegistryKey = UniqueHandle<NullEmptyTraits<HKEY, &RegCloseKey>>;
using UniqueInternetHandle = UniqueHandle<NullEmptyTraits<HINTERNET, &WinHttpCloseHandle>>;
using UniqueIcon = UniqueHandle<NullEmptyTraits<HICON, &DestroyIcon>>;
using UniqueMenu = UniqueHandle<NullEmptyTraits<HMENU, &DestroyMenu>>;
using UniqueBrush = UniqueHandle<NullEmptyTraits<HBRUSH, &DeleteObject>>;
using UniquePen = UniqueHandle<NullEmptyTraits<HPEN, &DeleteObject>>;
using UniqueFont = UniqueHandle<NullEmptyTraits<HFONT, &DeleteObject>>;
using UniqueBitmap = UniqueHandle<NullEmptyTraits<HBITMAP, &DeleteObject>>;
using UniqueMemoryDc = UniqueHandle<NullEmptyTraits<HDC, &DeleteDC>>;

// A window DC from GetDC, released to its window.
class ScopedWindowDc {
public:
    explicit ScopedWindowDc(HWND hwnd) noexcept : hwnd_(hwnd), dc_(GetDC(hwnd)) {}
    ScopedWindowDc(const ScopedWindowDc&) = delete;
    ScopedWindowDc& operator=(const ScopedWindowDc&) = delete;
    ~ScopedWindowDc() {
        if (dc_ != nullptr) {
            ReleaseDC(hwnd_, dc_);
        }
    }
    HDC get() const noexcept { return dc_; }

private:
    HWND hwnd_;
    HDC dc_;
};

// Selects a GDI object into a DC and puts the previous one back.
class ScopedSelect {
public:
    ScopedSelect(HDC dc, HGDIOBJ object) noexcept : dc_(dc), previous_(SelectObject(dc, object)) {}
    ScopedSelect(const ScopedSelect&) = delete;
    ScopedSelect& operator=(const ScopedSelect&) = delete;
    ~ScopedSelect() { SelectObject(dc_, previous_); }

private:
    HDC dc_;
    HGDIOBJ previous_;
};

} // namespace corvandell::win
