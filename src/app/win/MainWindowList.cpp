// The game list, its notifications and the details pane of the main window.
#include <windows.h>

#include <commctrl.h>
#include <windowsx.h>

#include "app/win/MainWindow.hpp"
#include "app/win/ThemeHook.hpp"
#include "base/win/WideText.hpp"

#include <array>

namespace corvandell::win {
namespace {

constexpr int kColumnCount = 5;
constexpr int kIconSize = 16;
constexpr int kCellPadding = 6;

std::array<std::wstring, kColumnCount> cellTexts(const LibraryItem& row) {
    return {widen(row.name), L"", widen(row.category), widen(row.platform), L""};
}

} // namespace

int MainWindow::selectedRow() const noexcept {
    const int index = ListView_GetNextItem(list_, -1, LVNI_SELECTED);
    if (index < 0 || static_cast<size_t>(index) >= rows_.size()) {
        return -1;
    }
    return index;
}

void MainWindow::refillList() {
    SendMessageW(list_, WM_SETREDRAW, FALSE, 0);
    ListView_DeleteAllItems(list_);
    for (size_t i = 0; i < rows_.size(); ++i) {
        std::wstring name = widen(rows_[i].name);
        LVITEMW item{};
        item.mask = LVIF_TEXT | LVIF_PARAM;
        item.iItem = static_cast<int>(i);
        item.pszText = name.data();
        item.lParam = static_cast<LPARAM>(i);
        ListView_InsertItem(list_, &item);
    }
    SendMessageW(list_, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(list_, nullptr, TRUE);
    fillDetails();
}

void MainWindow::fillDetails() {
    const int row = selectedRow();
    if (row < 0) {
        SetWindowTextW(details_, L"Select a game to see its details.");
        return;
    }
    const LibraryItem& item = rows_[static_cast<size_t>(row)];
    std::wstring text = widen(item.name);
    if (!item.description.empty()) {
        text += L"\r\n\r\n" + widen(item.description);
    }
    text += L"\r\n\r\nCategory: " + widen(item.category);
    text += L"\r\nPlatform: " + widen(item.platform);
    SetWindowTextW(details_, text.c_str());
}

void MainWindow::drawRow(const DRAWITEMSTRUCT& item) {
    if (item.itemID >= rows_.size()) {
        return;
    }
    const LibraryItem& row = rows_[item.itemID];
    const Skin& skin = currentTheme();
    const bool selected = (item.itemState & ODS_SELECTED) != 0;
    RECT rect = item.rcItem;
    FillRect(item.hDC, &rect, themeBrush(selected ? skin.selection : skin.controlBackground));
    SetBkMode(item.hDC, TRANSPARENT);
    SetTextColor(item.hDC, toColorRef(skin.controlText));

    const auto texts = cellTexts(row);
    int left = rect.left;
    for (int column = 0; column < kColumnCount; ++column) {
        const int width = ListView_GetColumnWidth(list_, column);
        RECT cell{left + kCellPadding, rect.top, left + width - kCellPadding, rect.bottom};
        if (column == 0) {
            if (const auto icon = rowIcons_.find(row.key); icon != rowIcons_.end()) {
                DrawIconEx(item.hDC, cell.left, rect.top + (rect.bottom - rect.top - kIconSize) / 2,
                           icon->second.get(), kIconSize, kIconSize, 0, nullptr, DI_NORMAL);
            }
            cell.left += kIconSize + kCellPadding;
        }
        DrawTextW(item.hDC, texts[static_cast<size_t>(column)].c_str(), -1, &cell,
                  DT_LEFT | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
        left += width;
    }
}

LRESULT MainWindow::onNotify(const NMHDR& header) {
    switch (header.code) {
    case LVN_ITEMCHANGED:
        fillDetails();
        return 0;
    case NM_RCLICK:
        showRowMenu();
        return 0;
    default:
        return 0;
    }
}

void MainWindow::showRowMenu() {
    const int row = selectedRow();
    if (row < 0 || !rows_[static_cast<size_t>(row)].isBrowserGame()) {
        return;
    }
    UniqueMenu menu(CreatePopupMenu());
    if (!menu) {
        return;
    }
    AppendMenuW(menu.get(), MF_STRING, command::GameOptions, L"Game Options...");
    POINT cursor{};
    GetCursorPos(&cursor);
    const int chosen = static_cast<int>(
        TrackPopupMenu(menu.get(), TPM_RETURNCMD | TPM_RIGHTBUTTON, cursor.x, cursor.y, 0, hwnd_, nullptr));
    if (chosen != 0) {
        SendMessageW(hwnd_, WM_COMMAND, MAKEWPARAM(chosen, 0), 0);
    }
}

void MainWindow::onRate(int stars) {
    // A rating only shows once the service has stored it; until ratings are sent there
    // is nothing to show.
    static_cast<void>(stars);
}

} // namespace corvandell::win
