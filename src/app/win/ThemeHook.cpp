#include <windows.h>

#include <commctrl.h>

#include "app/win/ThemeHook.hpp"
#include "base/win/UniqueHandle.hpp"

#include <map>
#include <string>

namespace corvandell::win {
namespace {

constexpr wchar_t kHoverProperty[] = L"CorvandellHover";
constexpr UINT_PTR kHoverSubclassId = 0xC0B0;
constexpr UINT_PTR kListSubclassId = 0xC0B1;

std::map<COLORREF, UniqueBrush>& brushCache() {
    static std::map<COLORREF, UniqueBrush> brushes;
    return brushes;
}

bool isEditControl(HWND control) noexcept {
    wchar_t className[16] = {};
    GetClassNameW(control, className, 16);
    return lstrcmpiW(className, WC_EDITW) == 0;
}

LRESULT colourControl(HDC dc, Rgb text, Rgb background) noexcept {
    SetTextColor(dc, toColorRef(text));
    SetBkColor(dc, toColorRef(background));
    return reinterpret_cast<LRESULT>(themeBrush(background));
}

void fillRect(HDC dc, const RECT& rect, Rgb colour) noexcept {
    FillRect(dc, &rect, themeBrush(colour));
}

void drawButton(const DRAWITEMSTRUCT& item) noexcept {
    const Skin& skin = currentTheme();
    const bool pressed = (item.itemState & ODS_SELECTED) != 0;
    const bool focused = (item.itemState & ODS_FOCUS) != 0;
    const bool disabled = (item.itemState & ODS_DISABLED) != 0;
    Rgb background = skin.buttonBackground;
    Rgb text = skin.buttonText;
    if (pressed) {
        background = skin.accent;
        text = skin.accentText;
    } else if (themeIsButtonHovered(item.hwndItem)) {
        background = skin.buttonHover;
    }
    if (disabled) {
        text = skin.mutedText;
    }
    RECT rect = item.rcItem;
    fillRect(item.hDC, rect, focused ? skin.accent : skin.border);
    InflateRect(&rect, -1, -1);
    fillRect(item.hDC, rect, background);

    wchar_t caption[128] = {};
    GetWindowTextW(item.hwndItem, caption, 128);
    const auto font = reinterpret_cast<HFONT>(SendMessageW(item.hwndItem, WM_GETFONT, 0, 0));
    const ScopedSelect selectFont(item.hDC, font != nullptr ? static_cast<HGDIOBJ>(font)
                                                            : GetStockObject(DEFAULT_GUI_FONT));
    SetBkMode(item.hDC, TRANSPARENT);
    SetTextColor(item.hDC, toColorRef(text));
    // "&" marks the caption's accelerator, underlined unless the user has not asked for
    // keyboard cues yet.
    const UINT prefix = (item.itemState & ODS_NOACCEL) != 0 ? DT_HIDEPREFIX : 0;
    DrawTextW(item.hDC, caption, -1, &rect, DT_CENTER | DT_VCENTER | DT_SINGLELINE | prefix);
}

bool isHeaderControl(HWND control) noexcept {
    wchar_t className[32] = {};
    GetClassNameW(control, className, 32);
    return lstrcmpiW(className, WC_HEADERW) == 0;
}

// List headers draw themselves light whatever the list's colours; paint them as buttons.
LRESULT drawHeader(NMCUSTOMDRAW& draw) noexcept {
    const Skin& skin = currentTheme();
    if (draw.dwDrawStage == CDDS_PREPAINT) {
        RECT all{};
        GetClientRect(draw.hdr.hwndFrom, &all);
        fillRect(draw.hdc, all, skin.buttonBackground);
        return CDRF_NOTIFYITEMDRAW;
    }
    if (draw.dwDrawStage != CDDS_ITEMPREPAINT) {
        return CDRF_DODEFAULT;
    }
    RECT rect = draw.rc;
    fillRect(draw.hdc, rect, skin.border);
    rect.right -= 1;
    fillRect(draw.hdc, rect, skin.buttonBackground);
    wchar_t title[64] = {};
    HDITEMW item{};
    item.mask = HDI_TEXT;
    item.pszText = title;
    item.cchTextMax = 64;
    Header_GetItem(draw.hdr.hwndFrom, static_cast<int>(draw.dwItemSpec), &item);
    rect.left += 6;
    SetBkMode(draw.hdc, TRANSPARENT);
    SetTextColor(draw.hdc, toColorRef(skin.buttonText));
    DrawTextW(draw.hdc, title, -1, &rect,
              DT_LEFT | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
    return CDRF_SKIPDEFAULT;
}

LRESULT CALLBACK hoverSubclass(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                               DWORD_PTR) noexcept {
    switch (message) {
    case WM_MOUSEMOVE:
        if (!themeIsButtonHovered(hwnd)) {
            SetPropW(hwnd, kHoverProperty, reinterpret_cast<HANDLE>(1));
            TRACKMOUSEEVENT track{sizeof(track), TME_LEAVE, hwnd, 0};
            TrackMouseEvent(&track);
            InvalidateRect(hwnd, nullptr, FALSE);
        }
        break;
    case WM_MOUSELEAVE:
        RemovePropW(hwnd, kHoverProperty);
        InvalidateRect(hwnd, nullptr, FALSE);
        break;
    case WM_NCDESTROY:
        RemovePropW(hwnd, kHoverProperty);
        RemoveWindowSubclass(hwnd, &hoverSubclass, kHoverSubclassId);
        break;
    default:
        break;
    }
    return DefSubclassProc(hwnd, message, wParam, lParam);
}

// The header reports its custom-draw stages to its parent, the list, not to our window.
LRESULT CALLBACK listSubclass(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                              DWORD_PTR) noexcept {
    if (message == WM_NOTIFY) {
        auto* header = reinterpret_cast<NMHDR*>(lParam);
        if (header != nullptr && header->code == NM_CUSTOMDRAW && isHeaderControl(header->hwndFrom)) {
            return drawHeader(*reinterpret_cast<NMCUSTOMDRAW*>(lParam));
        }
    }
    if (message == WM_NCDESTROY) {
        RemoveWindowSubclass(hwnd, &listSubclass, kListSubclassId);
    }
    return DefSubclassProc(hwnd, message, wParam, lParam);
}

} // namespace

COLORREF toColorRef(Rgb colour) noexcept {
    return RGB(colour.red, colour.green, colour.blue);
}

HBRUSH themeBrush(Rgb colour) noexcept {
    try {
        auto& brushes = brushCache();
        const COLORREF key = toColorRef(colour);
        auto found = brushes.find(key);
        if (found == brushes.end()) {
            found = brushes.emplace(key, UniqueBrush(CreateSolidBrush(key))).first;
        }
        return found->second.get();
    } catch (...) {
        return static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
    }
}

bool themeHandleMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) noexcept {
    const Skin& skin = currentTheme();
    switch (message) {
    case WM_ERASEBKGND: {
        RECT client{};
        GetClientRect(hwnd, &client);
        fillRect(reinterpret_cast<HDC>(wParam), client, skin.windowBackground);
        result = 1;
        return true;
    }
    case WM_CTLCOLORSTATIC: {
        const auto dc = reinterpret_cast<HDC>(wParam);
        // Read-only edits ask with the static message but sit on a control background.
        if (isEditControl(reinterpret_cast<HWND>(lParam))) {
            result = colourControl(dc, skin.controlText, skin.controlBackground);
        } else {
            result = colourControl(dc, skin.controlText, skin.windowBackground);
        }
        return true;
    }
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORLISTBOX:
        result = colourControl(reinterpret_cast<HDC>(wParam), skin.controlText, skin.controlBackground);
        return true;
    case WM_CTLCOLORBTN:
        result = reinterpret_cast<LRESULT>(themeBrush(skin.windowBackground));
        return true;
    case WM_DRAWITEM: {
        const auto* item = reinterpret_cast<const DRAWITEMSTRUCT*>(lParam);
        if (item == nullptr || item->CtlType != ODT_BUTTON) {
            return false;
        }
        drawButton(*item);
        result = TRUE;
        return true;
    }
    default:
        return false;
    }
}

void themeTrackButtonHover(HWND button) noexcept {
    SetWindowSubclass(button, &hoverSubclass, kHoverSubclassId, 0);
}

bool themeIsButtonHovered(HWND button) noexcept {
    return GetPropW(button, kHoverProperty) != nullptr;
}

void themeApplyToList(HWND list) noexcept {
    const Skin& skin = currentTheme();
    ListView_SetBkColor(list, toColorRef(skin.controlBackground));
    ListView_SetTextBkColor(list, toColorRef(skin.controlBackground));
    ListView_SetTextColor(list, toColorRef(skin.controlText));
    SetWindowSubclass(list, &listSubclass, kListSubclassId, 0);
    InvalidateRect(ListView_GetHeader(list), nullptr, TRUE);
}

} // namespace corvandell::win
