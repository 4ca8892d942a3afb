// The main window's child controls: creation, tooltips, fonts and layout, all at the
// window's own dots per inch, and the move to another monitor's.
#include <windows.h>

#include <commctrl.h>

#include "app/MainLayout.hpp"
#include "app/win/MainWindow.hpp"
#include "app/win/ThemeHook.hpp"
#include "base/win/Dpi.hpp"
#include "base/win/DpiWindow.hpp"

#include <algorithm>
#include <array>

namespace corvandell::win {
namespace {

struct ToolbarButton {
    int id;
    const wchar_t* caption;
    const wchar_t* tooltip;
};

constexpr std::array<ToolbarButton, 5> kButtons{{
    {command::Refresh, L"Refresh", L"Reload your Corvandell library and entitlements from the backend API."},
    {command::Launch, L"Launch",
     L"Does whatever the selected game needs: Install (download/clone), Update (a newer build exists), or "
     L"Launch (Shift+Tab in game opens the Corvandell overlay). While the game is running this button "
     L"becomes Stop. The KB/s limit (Options > Downloads) applies to downloads."},
    {command::AddGame, L"Add Game",
     L"Share a browser-based game by GitHub repository URL. Others can then install and play it. Link "
     L"GitHub in Options to auto-read corvandell.txt for repos you own."},
    {command::Friends, L"Friends",
     L"Open the floating friends list. Select one or more friends there to start a chat window."},
    {command::Options, L"Options", L"Connection, download, voice, and appearance settings."},
}};

struct ListColumn {
    const wchar_t* title;
    int width;
};

constexpr std::array<ListColumn, 5> kColumns{{
    {L"Title", 320},
    {L"State", 110},
    {L"Category", 140},
    {L"Platform", 110},
    {L"Rating", 90},
}};

HMENU idOf(int id) {
    return reinterpret_cast<HMENU>(static_cast<INT_PTR>(id));
}

void placeControl(HWND control, const ControlRect& rect) {
    if (control != nullptr) {
        // A window too small for the fixed parts gives negative sizes; show nothing then.
        MoveWindow(control, rect.x, rect.y, std::max(rect.width, 0), std::max(rect.height, 0), TRUE);
    }
}

} // namespace

void MainWindow::createControls() {
    const UINT dpi = windowDpi(hwnd_);
    font_ = createUiFont(dpi);
    HWND tooltip =
        CreateWindowExW(0, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX, CW_USEDEFAULT,
                        CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, hwnd_, nullptr, instance_, nullptr);
    SendMessageW(tooltip, TTM_SETMAXTIPWIDTH, 0, scaledForDpi(360, dpi));

    auto makeChild = [this](const wchar_t* className, const wchar_t* text, DWORD style, int id) {
        HWND child = CreateWindowExW(0, className, text, WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0, hwnd_,
                                     idOf(id), instance_, nullptr);
        SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(font_.get()), FALSE);
        return child;
    };

    makeChild(WC_STATICW, L"Search Library", 0, control::SearchLabel);
    search_ = makeChild(WC_EDITW, L"", WS_BORDER | WS_TABSTOP | ES_AUTOHSCROLL, command::Search);

    for (const ToolbarButton& toolbarButton : kButtons) {
        HWND button = makeChild(WC_BUTTONW, toolbarButton.caption, WS_TABSTOP | BS_PUSHBUTTON | BS_OWNERDRAW,
                                toolbarButton.id);
        themeTrackButtonHover(button);
        TTTOOLINFOW tool{};
        tool.cbSize = sizeof(tool);
        tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
        tool.hwnd = hwnd_;
        tool.uId = reinterpret_cast<UINT_PTR>(button);
        tool.lpszText = const_cast<wchar_t*>(toolbarButton.tooltip);
        SendMessageW(tooltip, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    }

    list_ = makeChild(WC_LISTVIEWW, L"",
                      WS_BORDER | WS_TABSTOP | LVS_REPORT | LVS_SINGLESEL | LVS_OWNERDRAWFIXED |
                          LVS_SHOWSELALWAYS | LVS_OWNERDATA,
                      command::List);
    ListView_SetExtendedListViewStyle(list_, LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER);
    for (size_t i = 0; i < kColumns.size(); ++i) {
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM;
        column.pszText = const_cast<wchar_t*>(kColumns[i].title);
        column.cx = scaledForDpi(kColumns[i].width, dpi);
        column.iSubItem = static_cast<int>(i);
        ListView_InsertColumn(list_, static_cast<int>(i), &column);
    }
    themeApplyToList(list_);

    makeChild(WC_STATICW, L"Game Details", 0, control::DetailsLabel);
    details_ =
        makeChild(WC_EDITW, L"", WS_VSCROLL | ES_MULTILINE | ES_READONLY | ES_AUTOVSCROLL, control::Details);

    playtimePanel_ = std::make_unique<PlaytimePanel>(instance_, [this](int stars) { rateSelected(stars); });
    if (playtimePanel_->create(hwnd_, control::PlaytimePanel)) {
        SendMessageW(playtimePanel_->hwnd(), WM_SETFONT, reinterpret_cast<WPARAM>(font_.get()), FALSE);
    }

    status_ = makeChild(WC_STATICW, L"Ready", SS_LEFTNOWORDWRAP, control::Status);
}

void MainWindow::layout(int clientWidth, int clientHeight) {
    const MainLayout rects = computeMainLayout(clientWidth, clientHeight, windowDpi(hwnd_));
    placeControl(control(control::SearchLabel), rects.searchLabel);
    placeControl(search_, rects.searchEdit);
    placeControl(control(command::Refresh), rects.refreshButton);
    placeControl(control(command::Launch), rects.launchButton);
    placeControl(control(command::AddGame), rects.addGameButton);
    placeControl(control(command::Friends), rects.friendsButton);
    placeControl(control(command::Options), rects.optionsButton);
    placeControl(list_, rects.list);
    if (list_ != nullptr) {
        fitColumns();
    }
    placeControl(control(control::DetailsLabel), rects.detailsLabel);
    placeControl(details_, rects.details);
    placeControl(playtimePanel_ ? playtimePanel_->hwnd() : nullptr, rects.playtimePanel);
    placeControl(status_, rects.statusLine);
}

// Windows has already moved the window to the new monitor when this arrives, and its
// dots per inch are the new ones: new fonts first, so the layout that the resize brings
// measures with them.
void MainWindow::onDpiChanged(const RECT& suggested) {
    font_ = createUiFont(windowDpi(hwnd_));
    setChildrenFont(hwnd_, font_.get(), false);
    // An owner-drawn list measures its rows only when its frame changes.
    SetWindowPos(list_, nullptr, 0, 0, 0, 0,
                 SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_FRAMECHANGED);
    applySuggestedRect(hwnd_, suggested);
    RECT client{};
    GetClientRect(hwnd_, &client);
    layout(client.right, client.bottom); // also when the suggested size is the old one
    RedrawWindow(hwnd_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

} // namespace corvandell::win
