// The options dialog's frame: creation, the tab strip, keyboard handling, DPI layout, and
// OK, Cancel and Apply. Each tab's fields live in their own file (OptionsConnection.cpp,
// OptionsDownloads.cpp, OptionsVoice.cpp, OptionsAppearance.cpp, OptionsProfile.cpp).
// Keys reach it through DialogKeys, which works in the client's plain message loop.
#include <windows.h>

#include <commctrl.h>

#include "app/OptionsInput.hpp"
#include "app/win/DialogKeys.hpp"
#include "app/win/Messages.hpp"
#include "app/win/OptionsDialog.hpp"
#include "app/win/OptionsLayout.hpp"
#include "app/win/OptionsMessages.hpp"
#include "app/win/ThemeHook.hpp"
#include "base/win/Dpi.hpp"
#include "base/win/WideText.hpp"
#include "voice/win/WaveDevices.hpp"

#include <algorithm>
#include <array>

namespace corvandell::win {
namespace {

using namespace options;

constexpr wchar_t kClassName[] = L"CorvandellOptions";
constexpr wchar_t kTitle[] = L"Corvandell Options";
constexpr std::array<const wchar_t*, kTabCount> kTabNames{L"Connection", L"Downloads", L"Voice",
                                                          L"Appearance", L"Profile"};
constexpr DWORD kDialogStyle = WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX | WS_CLIPCHILDREN;
constexpr DWORD kDialogExStyle = WS_EX_DLGMODALFRAME | WS_EX_CONTROLPARENT;
constexpr UINT_PTR kTabStripSubclassId = 0xC0C0;

// The frame's own controls, around the tabs' tables.
constexpr std::array<OptionsControl, 5> kFrameControls{{
    {kTabStrip, WC_TABCONTROLW, L"", WS_TABSTOP | TCS_FOCUSONBUTTONDOWN | TCS_FIXEDWIDTH, 12, 10, 536, 28},
    {kMessageLine, WC_STATICW, L"", SS_LEFT | SS_NOPREFIX, 16, 392, 528, 34},
    {IDOK, WC_BUTTONW, L"OK", kButtonStyle, 296, 432, 80, 26},
    {IDCANCEL, WC_BUTTONW, L"Cancel", kButtonStyle, 382, 432, 80, 26},
    {kApplyButton, WC_BUTTONW, L"&Apply", kButtonStyle, 468, 432, 80, 26},
}};

std::span<const OptionsControl> controlsOfTab(int tab) {
    switch (static_cast<Tab>(tab)) {
    case Tab::Connection:
        return connectionControls();
    case Tab::Downloads:
        return downloadsControls();
    case Tab::Voice:
        return voiceControls();
    case Tab::Appearance:
        return appearanceControls();
    case Tab::Profile:
        return profileControls();
    }
    return {};
}

HMENU idOf(int id) {
    return reinterpret_cast<HMENU>(static_cast<INT_PTR>(id));
}

// --- the tab strip ----------------------------------------------------------------------

// The tab control paints itself in system colours whatever the skin; it is painted here
// instead, as a row of flat tabs with the chosen one underlined in the accent colour.
void paintTabStrip(HWND strip, HDC dc) {
    const Skin& skin = currentTheme();
    RECT all{};
    GetClientRect(strip, &all);
    FillRect(dc, &all, themeBrush(skin.windowBackground));
    const auto font = reinterpret_cast<HFONT>(SendMessageW(strip, WM_GETFONT, 0, 0));
    const ScopedSelect selectFont(dc, font);
    SetBkMode(dc, TRANSPARENT);
    const int selected = TabCtrl_GetCurSel(strip);
    const int underline = std::max(2, scaledForDpi(2, windowDpi(strip)));
    for (int i = 0; i < TabCtrl_GetItemCount(strip); ++i) {
        RECT item{};
        TabCtrl_GetItemRect(strip, i, &item);
        item.bottom = all.bottom;
        const bool isSelected = i == selected;
        FillRect(dc, &item, themeBrush(isSelected ? skin.controlBackground : skin.buttonBackground));
        if (isSelected) {
            RECT bar = item;
            bar.top = bar.bottom - underline;
            FillRect(dc, &bar, themeBrush(skin.accent));
        }
        wchar_t text[32] = {};
        TCITEMW tabItem{};
        tabItem.mask = TCIF_TEXT;
        tabItem.pszText = text;
        tabItem.cchTextMax = 32;
        TabCtrl_GetItem(strip, i, &tabItem);
        SetTextColor(dc, toColorRef(isSelected ? skin.controlText : skin.mutedText));
        DrawTextW(dc, text, -1, &item, DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX);
        if (isSelected && GetFocus() == strip) {
            RECT focus = item;
            InflateRect(&focus, -3, -3);
            DrawFocusRect(dc, &focus);
        }
    }
}

LRESULT CALLBACK tabStripSubclass(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                  DWORD_PTR) noexcept {
    switch (message) {
    case WM_ERASEBKGND:
        return 1;
    case WM_PAINT: {
        PAINTSTRUCT paint{};
        HDC dc = BeginPaint(hwnd, &paint);
        paintTabStrip(hwnd, dc);
        EndPaint(hwnd, &paint);
        return 0;
    }
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
        InvalidateRect(hwnd, nullptr, FALSE);
        break;
    case WM_NCDESTROY:
        RemoveWindowSubclass(hwnd, &tabStripSubclass, kTabStripSubclassId);
        break;
    default:
        break;
    }
    return DefSubclassProc(hwnd, message, wParam, lParam);
}

} // namespace

namespace options {

bool isHintControl(int id) noexcept {
    switch (id) {
    case kServiceAddressHint:
    case kLibraryFolderHint:
    case kDownloadLimitHint:
    case kVoiceHint:
    case kSkinHint:
    case kSkinFolder:
    case kPictureHint:
    case kGitHubHint:
        return true;
    default:
        return false;
    }
}

} // namespace options

OptionsDialog::OptionsDialog(HINSTANCE instance, OptionsHost host, Tab tab)
    : instance_(instance), host_(std::move(host)), tab_(tab), originalSkin_(currentTheme()) {}

OptionsDialog::~OptionsDialog() = default;

OptionsDialog* OptionsDialog::open(HINSTANCE instance, OptionsHost host, Tab tab, int showCommand) {
    if (host.settings == nullptr ||
        !registerWindowClass(instance, kClassName, &Window::windowProcedure, nullptr)) {
        return nullptr;
    }
    INITCOMMONCONTROLSEX controls{sizeof(controls),
                                  ICC_TAB_CLASSES | ICC_UPDOWN_CLASS | ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&controls);
    HWND owner = host.mainWindow;
    auto* dialog = new OptionsDialog(instance, std::move(host), tab);
    if (!createSelfDeleting(dialog, kDialogExStyle, kClassName, kTitle, 600, 520, owner, instance,
                            kDialogStyle)) {
        return nullptr;
    }
    ShowWindow(dialog->hwnd_, showCommand);
    UpdateWindow(dialog->hwnd_);
    return dialog;
}

LRESULT OptionsDialog::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CTLCOLORSTATIC) {
        const int id = GetDlgCtrlID(reinterpret_cast<HWND>(lParam));
        if (isHintControl(id) || id == kMessageLine) {
            const Skin& skin = currentTheme();
            const auto dc = reinterpret_cast<HDC>(wParam);
            SetTextColor(dc, toColorRef(id == kMessageLine && GetPropW(hwnd_, L"CorvandellProblem") != nullptr
                                            ? skin.accent
                                            : skin.mutedText));
            SetBkColor(dc, toColorRef(skin.windowBackground));
            return reinterpret_cast<LRESULT>(themeBrush(skin.windowBackground));
        }
    }
    LRESULT themed = 0;
    if (themeHandleMessage(hwnd_, message, wParam, lParam, themed)) {
        return themed;
    }
    return route(message, wParam, lParam);
}

LRESULT OptionsDialog::route(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CREATE:
        onCreate();
        return 0;
    case WM_COMMAND:
        onCommand(LOWORD(wParam), HIWORD(wParam), reinterpret_cast<HWND>(lParam));
        return 0;
    case WM_NOTIFY: {
        const auto* header = reinterpret_cast<const NMHDR*>(lParam);
        if (header != nullptr && header->idFrom == kTabStrip && header->code == TCN_SELCHANGE) {
            showTab(static_cast<Tab>(TabCtrl_GetCurSel(header->hwndFrom)));
        }
        return 0;
    }
    case WM_DRAWITEM:
        drawItem(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
        return TRUE;
    case WM_CLOSE:
        finish(false);
        return 0;
    case WM_ACTIVATE:
        onActivate(LOWORD(wParam) != WA_INACTIVE);
        return 0;
    case WM_NEXTDLGCTL:
        dialogNextControl(hwnd_, wParam, lParam);
        return 0;
    case WM_TIMER:
        if (wParam == kMeterTimerId) {
            onMeterTick();
        }
        return 0;
    case WM_DPICHANGED:
        onDpiChanged(HIWORD(wParam), *reinterpret_cast<const RECT*>(lParam));
        return 0;
    case DM_GETDEFID:
        return MAKELRESULT(IDOK, DC_HASDEFID);
    case kMsgDialogNextPage: {
        const int step = wParam != 0 ? 1 : kTabCount - 1;
        showTab(static_cast<Tab>((static_cast<int>(tab_) + step) % kTabCount));
        SetFocus(control(kTabStrip));
        return 0;
    }
    case kMsgProfileLoaded:
        jobEnded();
        onProfileLoaded(takeUiJobResult<ProfileLoaded>(lParam));
        return 0;
    case kMsgProfileSaved:
        jobEnded();
        onProfileSaved(takeUiJobResult<ProfileSaved>(lParam));
        return 0;
    case kMsgPictureUploaded:
        jobEnded();
        onPictureUploaded(takeUiJobResult<PictureUploaded>(lParam));
        return 0;
    case kMsgGitHubStep:
        jobEnded();
        onGitHubStep(takeUiJobResult<GitHubStep>(lParam));
        return 0;
    case WM_DESTROY:
        onDestroy();
        return 0;
    default:
        break;
    }
    return DefWindowProcW(hwnd_, message, wParam, lParam);
}

void OptionsDialog::onCreate() {
    dpi_ = windowDpi(hwnd_);
    createControls();
    fillConnection();
    fillDownloads();
    fillVoice();
    fillAppearance();
    fillProfile();
    // The frame's size follows from the client area at this DPI; centred on the main window.
    RECT frame{0, 0, scaledForDpi(kClientWidth, dpi_), scaledForDpi(kClientHeight, dpi_)};
    AdjustWindowRectExForDpi(&frame, kDialogStyle, FALSE, kDialogExStyle, dpi_);
    const int width = frame.right - frame.left;
    const int height = frame.bottom - frame.top;
    RECT around{};
    if (host_.mainWindow == nullptr || !IsWindowVisible(host_.mainWindow) ||
        !GetWindowRect(host_.mainWindow, &around)) {
        SystemParametersInfoW(SPI_GETWORKAREA, 0, &around, 0);
    }
    SetWindowPos(hwnd_, nullptr, around.left + (around.right - around.left - width) / 2,
                 around.top + std::max(0L, (around.bottom - around.top - height) / 2), width, height,
                 SWP_NOZORDER | SWP_NOACTIVATE);
    layout();
    showTab(tab_);
    addDialogKeys(hwnd_);
    loadProfile();
}

// Focus goes back to the control that had it, as in the system's dialogs, rather than to
// the dialog window itself.
void OptionsDialog::onActivate(bool isActive) {
    if (!isActive) {
        HWND focus = GetFocus();
        lastFocus_ = focus != nullptr && IsChild(hwnd_, focus) ? focus : nullptr;
        return;
    }
    HWND focus = lastFocus_ != nullptr && IsWindow(lastFocus_) && IsWindowVisible(lastFocus_) &&
                         IsWindowEnabled(lastFocus_)
                     ? lastFocus_
                     : GetNextDlgTabItem(hwnd_, nullptr, FALSE);
    if (focus != nullptr) {
        SetFocus(focus);
    }
    // Back from the browser after linking GitHub: show the account it linked.
    if (isGitHubLinkPending_) {
        refreshGitHub();
    }
}

void OptionsDialog::createControls() {
    font_ = createUiFont(dpi_);
    auto make = [this](const OptionsControl& entry, bool isVisible) {
        HWND child = CreateWindowExW(0, entry.className, entry.text,
                                     WS_CHILD | (isVisible ? WS_VISIBLE : 0) | entry.style, 0, 0, 0, 0, hwnd_,
                                     idOf(entry.id), instance_, nullptr);
        SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(font_.get()), FALSE);
        if ((entry.style & BS_TYPEMASK) == BS_OWNERDRAW && lstrcmpW(entry.className, WC_BUTTONW) == 0) {
            themeTrackButtonHover(child);
        }
        return child;
    };
    // Creation order is tab order: the strip, the tabs' fields, then the buttons.
    HWND strip = make(kFrameControls[0], true);
    for (int i = 0; i < kTabCount; ++i) {
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = const_cast<wchar_t*>(kTabNames[static_cast<size_t>(i)]);
        TabCtrl_InsertItem(strip, i, &item);
    }
    SetWindowSubclass(strip, &tabStripSubclass, kTabStripSubclassId, 0);
    for (int tab = 0; tab < kTabCount; ++tab) {
        for (const OptionsControl& entry : controlsOfTab(tab)) {
            tabControls_[tab].push_back(make(entry, false));
        }
    }
    for (size_t i = 1; i < kFrameControls.size(); ++i) {
        make(kFrameControls[i], true);
    }
    for (const auto& [spin, buddy] :
         {std::pair{kInputVolumeSpin, kInputVolume}, std::pair{kOutputVolumeSpin, kOutputVolume}}) {
        SendMessageW(control(spin), UDM_SETRANGE32, 0, kMaxVolumePercent);
        SendMessageW(control(spin), UDM_SETBUDDY, reinterpret_cast<WPARAM>(control(buddy)), 0);
    }
}

void OptionsDialog::layout() {
    auto place = [this](const OptionsControl& entry) {
        MoveWindow(control(entry.id), scaledForDpi(entry.x, dpi_), scaledForDpi(entry.y, dpi_),
                   scaledForDpi(entry.width, dpi_), scaledForDpi(entry.height, dpi_), TRUE);
    };
    for (const OptionsControl& entry : kFrameControls) {
        place(entry);
    }
    for (int tab = 0; tab < kTabCount; ++tab) {
        for (const OptionsControl& entry : controlsOfTab(tab)) {
            place(entry);
        }
    }
    HWND strip = control(kTabStrip);
    TabCtrl_SetPadding(strip, scaledForDpi(14, dpi_), scaledForDpi(4, dpi_));
    TabCtrl_SetItemSize(strip, scaledForDpi(100, dpi_), scaledForDpi(28, dpi_));
    // An up-down control sits on its buddy's right edge; moving the edit leaves it behind.
    for (const auto& [spin, buddy] :
         {std::pair{kInputVolumeSpin, kInputVolume}, std::pair{kOutputVolumeSpin, kOutputVolume}}) {
        SendMessageW(control(spin), UDM_SETBUDDY, reinterpret_cast<WPARAM>(control(buddy)), 0);
    }
}

void OptionsDialog::onDpiChanged(UINT dpi, const RECT& suggested) {
    dpi_ = dpi;
    font_ = createUiFont(dpi_);
    for (HWND child = GetWindow(hwnd_, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(font_.get()), FALSE);
    }
    SetWindowPos(hwnd_, nullptr, suggested.left, suggested.top, suggested.right - suggested.left,
                 suggested.bottom - suggested.top, SWP_NOZORDER | SWP_NOACTIVATE);
    layout();
    RedrawWindow(hwnd_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

void OptionsDialog::showTab(Tab tab) {
    tab_ = tab;
    TabCtrl_SetCurSel(control(kTabStrip), static_cast<int>(tab));
    HWND focus = GetFocus();
    for (int i = 0; i < kTabCount; ++i) {
        const int show = i == static_cast<int>(tab) ? SW_SHOWNA : SW_HIDE;
        for (HWND child : tabControls_[i]) {
            ShowWindow(child, show);
        }
    }
    if (focus != nullptr && IsChild(hwnd_, focus) && !IsWindowVisible(focus)) {
        SetFocus(control(kTabStrip));
    }
    if (tab == Tab::Voice) {
        startMeter();
    } else {
        stopMeter();
    }
    InvalidateRect(control(kTabStrip), nullptr, FALSE);
}

std::wstring OptionsDialog::messageText() const {
    return hwndText(control(kMessageLine));
}

void OptionsDialog::setMessage(const std::wstring& text, bool isProblem) {
    if (isProblem) {
        SetPropW(hwnd_, L"CorvandellProblem", reinterpret_cast<HANDLE>(1));
    } else {
        RemovePropW(hwnd_, L"CorvandellProblem");
    }
    SetWindowTextW(control(kMessageLine), text.c_str());
    InvalidateRect(control(kMessageLine), nullptr, TRUE);
}

void OptionsDialog::onCommand(int id, int notification, HWND from) {
    switch (id) {
    case IDOK:
        if (!apply()) {
            return;
        }
        if (isNicknameSaving_) {
            isClosingAfterSave_ = true; // closes once the service has the nickname
            setMessage(L"Saving your profile...");
            return;
        }
        finish(true);
        return;
    case IDCANCEL:
        finish(false);
        return;
    case kApplyButton:
        apply();
        return;
    case kSignOut:
        signOut();
        return;
    case kBrowseFolder:
        browseForFolder();
        return;
    case kInputDevice:
        if (notification == CBN_SELCHANGE && tab_ == Tab::Voice) {
            startMeter(); // listen to the device just chosen
        }
        return;
    case kSkinList:
        if (notification == LBN_SELCHANGE) {
            previewSelectedSkin();
        }
        return;
    case kOpenSkinFolder:
        openSkinFolder();
        return;
    case kReloadSkins:
        reloadSkins();
        return;
    case kChoosePicture:
        choosePicture();
        return;
    case kLinkGitHub:
        linkGitHub();
        return;
    case kRefreshGitHub:
        refreshGitHub();
        return;
    default:
        static_cast<void>(from);
        return;
    }
}

std::optional<OptionsDialog::FieldProblem> OptionsDialog::collectChanges(Settings& changed,
                                                                         bool& isNicknameChanged) {
    // In tab order, so the first problem named is the first one the user would meet.
    if (auto problem = readConnection(changed)) {
        return problem;
    }
    if (auto problem = readDownloads(changed)) {
        return problem;
    }
    if (auto problem = readVoice(changed)) {
        return problem;
    }
    readAppearance(changed);
    return readProfile(isNicknameChanged);
}

void OptionsDialog::showProblem(const FieldProblem& problem) {
    showTab(tabOfControl(problem.controlId));
    HWND field = control(problem.controlId);
    SetFocus(field);
    SendMessageW(field, EM_SETSEL, 0, -1);
    setMessage(widen(problem.message), true);
}

bool OptionsDialog::apply() {
    Settings changed = *host_.settings;
    bool isNicknameChanged = false;
    if (auto problem = collectChanges(changed, isNicknameChanged)) {
        showProblem(*problem);
        return false;
    }
    // Only now, with every field good, may the folder be made.
    if (changed.libraryPath != host_.settings->libraryPath) {
        if (std::string error = createLibraryFolder(changed.libraryPath); !error.empty()) {
            showProblem({kLibraryFolder, error});
            return false;
        }
    }
    // A session belongs to the service that issued it: its token is never sent elsewhere.
    const bool isServiceChanged = changed.apiBaseUrl != host_.settings->apiBaseUrl;
    const bool wasSignedIn = isSignedIn();
    if (isServiceChanged) {
        changed.bearerToken.clear();
        changed.refreshToken.clear();
        changed.username.clear();
    }
    const Settings previous = *host_.settings;
    if (changed != previous) {
        *host_.settings = changed;
        const std::string error = host_.saveSettings ? host_.saveSettings() : std::string();
        if (!error.empty()) {
            *host_.settings = previous;
            setMessage(L"Nothing was changed: " + widen(error), true);
            return false;
        }
    }
    originalSkin_ = currentTheme();
    isSkinPreviewed_ = false;
    if (isServiceChanged) {
        showSessionState();
        fillProfile();
        PostMessageW(host_.mainWindow, WM_COMMAND, MAKEWPARAM(command::Refresh, BN_CLICKED), 0);
    }
    setMessage(isServiceChanged && wasSignedIn
                   ? L"Settings saved. You are signed out of the previous service."
                   : L"Settings saved.");
    if (isNicknameChanged && isSignedIn()) {
        saveNickname();
    }
    return true;
}

void OptionsDialog::finish(bool isApplied) {
    if (!isApplied) {
        restoreOriginalSkin();
    }
    DestroyWindow(hwnd_);
}

void OptionsDialog::onDestroy() noexcept {
    removeDialogKeys(hwnd_);
    stopMeter();
    RemovePropW(hwnd_, L"CorvandellProblem");
    jobThreads_.waitForAll();
    for (UINT message = kMsgProfileLoaded; message <= kMsgGitHubStep; ++message) {
        MSG queued{};
        while (PeekMessageW(&queued, hwnd_, message, message, PM_REMOVE)) {
            switch (message) {
            case kMsgProfileLoaded:
                takeUiJobResult<ProfileLoaded>(queued.lParam).reset();
                break;
            case kMsgProfileSaved:
                takeUiJobResult<ProfileSaved>(queued.lParam).reset();
                break;
            case kMsgPictureUploaded:
                takeUiJobResult<PictureUploaded>(queued.lParam).reset();
                break;
            default:
                takeUiJobResult<GitHubStep>(queued.lParam).reset();
                break;
            }
        }
    }
    if (host_.mainWindow != nullptr) {
        PostMessageW(host_.mainWindow, MsgChildClosed, static_cast<WPARAM>(ChildKind::Options),
                     reinterpret_cast<LPARAM>(hwnd_));
    }
}

void OptionsDialog::drawItem(const DRAWITEMSTRUCT& item) {
    if (item.CtlID == kInputLevel) {
        drawMeter(item);
        return;
    }
    if (item.CtlID == kPicturePreview) {
        drawPicture(item);
    }
}

template <UiJobResult Result> void OptionsDialog::startJob(UINT message, std::function<Result()> producer) {
    ++pendingJobs_;
    jobThreads_.start<Result>(hwnd_, message, std::move(producer), "");
}

template void OptionsDialog::startJob<ProfileLoaded>(UINT, std::function<ProfileLoaded()>);
template void OptionsDialog::startJob<ProfileSaved>(UINT, std::function<ProfileSaved()>);
template void OptionsDialog::startJob<PictureUploaded>(UINT, std::function<PictureUploaded()>);
template void OptionsDialog::startJob<GitHubStep>(UINT, std::function<GitHubStep()>);

void OptionsDialog::jobEnded() noexcept {
    pendingJobs_ = std::max(0, pendingJobs_ - 1);
}

} // namespace corvandell::win
