// The game list, its notifications, the details pane and the action button of the main
// window. The list holds no items of its own (owner data): it asks for what it shows, and
// draws only the rows on screen, so a library of ten thousand games refills at once.
#include <windows.h>

#include <commctrl.h>
#include <windowsx.h>

#include "app/LibraryActivity.hpp"
#include "app/MainLayout.hpp"
#include "app/win/MainWindow.hpp"
#include "app/win/StarIcon.hpp"
#include "app/win/ThemeHook.hpp"
#include "base/win/Dpi.hpp"
#include "base/win/WideText.hpp"

#include <algorithm>
#include <array>

namespace corvandell::win {
namespace {

constexpr int kColumnCount = 5;
constexpr int kIconSize = 16;
constexpr int kCellPadding = 8;
constexpr int kStarSize = 12;

Rgb mix(Rgb a, Rgb b, int percentOfB) {
    const auto blend = [percentOfB](std::uint8_t x, std::uint8_t y) {
        return static_cast<std::uint8_t>((x * (100 - percentOfB) + y * percentOfB) / 100);
    };
    return {blend(a.red, b.red), blend(a.green, b.green), blend(a.blue, b.blue)};
}

Rgb textColourOf(const LibraryItem& row, const Skin& skin) {
    switch (textClassOf(row)) {
    case RowTextClass::Installed:
        return skin.controlText;
    case RowTextClass::OwnedOrBrowser:
        return mix(skin.controlText, skin.accent, 45);
    default:
        return skin.mutedText;
    }
}

// A row without an icon gets a rounded badge with its first letter, in a colour of its own
// so neighbouring rows tell apart at a glance.
void drawBadge(HDC dc, const RECT& box, const LibraryItem& row, const Skin& skin) {
    static constexpr std::array<Rgb, 6> kHues{{{0x3d, 0x8b, 0xd9},
                                               {0x8e, 0x5b, 0xd0},
                                               {0x2f, 0xa8, 0x7a},
                                               {0xd9, 0x7a, 0x2b},
                                               {0xc9, 0x4b, 0x6b},
                                               {0x4b, 0x9c, 0xb5}}};
    size_t hash = 0;
    for (const char c : row.name) {
        hash = hash * 31 + static_cast<unsigned char>(c);
    }
    const Rgb hue = mix(kHues[hash % kHues.size()], skin.controlBackground, 20);
    const ScopedSelect brush(dc, themeBrush(hue));
    const ScopedSelect pen(dc, GetStockObject(NULL_PEN));
    RoundRect(dc, box.left, box.top, box.right + 1, box.bottom + 1, 5, 5);
    std::wstring letter = row.name.empty() ? L"?" : widen(row.name.substr(0, 1));
    if (!row.name.empty() && static_cast<unsigned char>(row.name[0]) >= 0x80) {
        letter = widen(row.name).substr(0, 1);
    }
    SetTextColor(dc, RGB(0xff, 0xff, 0xff));
    RECT text = box;
    DrawTextW(dc, letter.c_str(), -1, &text, DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX);
}

// Setting an edit's text re-lays it out and repaints its scroll bar even when nothing
// changed, which a refresh would otherwise pay for on every refill.
void setTextIfChanged(HWND control, const std::wstring& text) {
    if (hwndText(control) != text) {
        SetWindowTextW(control, text.c_str());
    }
}

} // namespace

// The selection as the list reported it: asking the list scans every row of an owner-data
// list, which on a large library costs milliseconds each time.
int MainWindow::selectedRow() const noexcept {
    if (selectedIndex_ < 0 || static_cast<size_t>(selectedIndex_) >= rows_.size()) {
        return -1;
    }
    return selectedIndex_;
}

void MainWindow::trackSelection(const NMLISTVIEW& change) noexcept {
    if ((change.uChanged & LVIF_STATE) == 0 || ((change.uNewState ^ change.uOldState) & LVIS_SELECTED) == 0) {
        return;
    }
    if ((change.uNewState & LVIS_SELECTED) != 0 && change.iItem >= 0) {
        selectedIndex_ = change.iItem;
    } else if (change.iItem < 0 || change.iItem == selectedIndex_) {
        selectedIndex_ = -1;
    }
}

void MainWindow::selectRowByKey(const std::string& key) {
    for (size_t i = 0; i < rows_.size(); ++i) {
        if (rows_[i].key == key) {
            const int index = static_cast<int>(i);
            ListView_SetItemState(list_, index, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
            ListView_EnsureVisible(list_, index, FALSE);
            return;
        }
    }
}

void MainWindow::refillList() {
    // The selection is kept across a refresh by key: row numbers change as games come and go.
    const int selected = selectedIndex_;
    const std::string selectedKey = selected >= 0 && static_cast<size_t>(selected) < previousKeys_.size()
                                        ? previousKeys_[static_cast<size_t>(selected)]
                                        : std::string();
    isRefilling_ = true;
    // Only the rows that hold a state are cleared, and the count is set only when it
    // changes: either call, made for every row, costs tens of milliseconds on a large list.
    if (selected >= 0) {
        ListView_SetItemState(list_, selected, 0, LVIS_SELECTED | LVIS_FOCUSED);
    }
    selectedIndex_ = -1;
    if (ListView_GetItemCount(list_) != static_cast<int>(rows_.size())) {
        ListView_SetItemCountEx(list_, static_cast<int>(rows_.size()), LVSICF_NOSCROLL);
    }
    previousKeys_.clear();
    previousKeys_.reserve(rows_.size());
    for (const LibraryItem& row : rows_) {
        previousKeys_.push_back(row.key);
    }
    if (!selectedKey.empty()) {
        selectRowByKey(selectedKey);
    }
    isRefilling_ = false;
    fitColumns();
    InvalidateRect(list_, nullptr, FALSE);
    fillDetails();
}

void MainWindow::fitColumns() {
    RECT client{};
    GetClientRect(list_, &client);
    // Room for the vertical scroll bar is kept while it is hidden, so that its coming
    // never pushes the last column out of sight.
    const bool hasScrollBar = (GetWindowLongW(list_, GWL_STYLE) & WS_VSCROLL) != 0;
    const UINT dpi = windowDpi(hwnd_);
    const int width =
        client.right - client.left - (hasScrollBar ? 0 : GetSystemMetricsForDpi(SM_CXVSCROLL, dpi));
    const std::array<int, 5> widths = fitListColumns(width, dpi);
    for (int column = 0; column < kColumnCount; ++column) {
        if (ListView_GetColumnWidth(list_, column) != widths[static_cast<size_t>(column)]) {
            ListView_SetColumnWidth(list_, column, widths[static_cast<size_t>(column)]);
        }
    }
}

std::wstring MainWindow::cellText(int row, int column) const {
    if (row < 0 || static_cast<size_t>(row) >= rows_.size()) {
        return {};
    }
    const LibraryItem& item = rows_[static_cast<size_t>(row)];
    switch (column) {
    case 0:
        return widen(item.name);
    case 1:
        return widen(stateText(item, tracked_));
    case 2:
        return widen(item.category);
    case 3:
        return widen(item.platform);
    case 4: {
        const auto rating = ratings_.find(item.key);
        return rating == ratings_.end() ? std::wstring() : widen(ratingText(rating->second));
    }
    default:
        return {};
    }
}

void MainWindow::fillDisplayInfo(NMLVDISPINFOW& info) {
    if ((info.item.mask & LVIF_TEXT) == 0 || info.item.pszText == nullptr || info.item.cchTextMax <= 0) {
        return;
    }
    const std::wstring text = cellText(info.item.iItem, info.item.iSubItem);
    const size_t length = std::min(text.size(), static_cast<size_t>(info.item.cchTextMax - 1));
    std::copy_n(text.begin(), length, info.item.pszText);
    info.item.pszText[length] = L'\0';
}

void MainWindow::fillDetails() {
    const int row = selectedRow();
    updateActionButton();
    if (row < 0) {
        setTextIfChanged(details_, L"Select a game to see its details.");
        showPlaytimeFor(nullptr);
        return;
    }
    const LibraryItem& item = rows_[static_cast<size_t>(row)];
    setTextIfChanged(details_, widen(detailsText(item, tracked_)));
    showPlaytimeFor(&item);
}

void MainWindow::showPlaytimeFor(const LibraryItem* row) {
    if (row == nullptr) {
        playtimeKey_.clear();
        playtimePanel_->setMyStars(0);
        playtimePanel_->setText(
            L"Select a game to see your playtime, your friends' and what they say about it.");
        return;
    }
    const auto rating = ratings_.find(row->key);
    playtimePanel_->setMyStars(rating == ratings_.end() ? 0 : std::max(rating->second.myStars, 0));
    if (!isSignedIn()) {
        playtimeKey_.clear();
        playtimePanel_->setText(L"Sign in to rate games.");
        return;
    }
    if (row->key == playtimeKey_) {
        return; // already shown, or on its way
    }
    requestPlaytime(*row);
}

void MainWindow::updateActionButton() {
    const int row = selectedRow();
    const std::string label = row < 0 ? "Launch" : actionLabel(rows_[static_cast<size_t>(row)], tracked_);
    HWND button = control(command::Launch);
    if (hwndText(button) != widen(label)) {
        SetWindowTextW(button, widen(label).c_str());
        InvalidateRect(button, nullptr, FALSE);
    }
}

void MainWindow::drawRow(const DRAWITEMSTRUCT& item) {
    if (item.itemID >= rows_.size()) {
        return;
    }
    const LibraryItem& row = rows_[item.itemID];
    const Skin& skin = currentTheme();
    const UINT dpi = windowDpi(hwnd_);
    const int iconSize = scaledForDpi(kIconSize, dpi);
    const int cellPadding = scaledForDpi(kCellPadding, dpi);
    const int starSize = scaledForDpi(kStarSize, dpi);
    const bool selected = (item.itemState & ODS_SELECTED) != 0;
    RECT rect = item.rcItem;
    const Rgb background = selected               ? skin.selection
                           : item.itemID % 2 == 1 ? mix(skin.controlBackground, skin.controlText, 3)
                                                  : skin.controlBackground;
    FillRect(item.hDC, &rect, themeBrush(background));
    if (selected) {
        RECT bar{rect.left, rect.top, rect.left + scaledForDpi(3, dpi), rect.bottom};
        FillRect(item.hDC, &bar, themeBrush(skin.accent));
    }
    SetBkMode(item.hDC, TRANSPARENT);
    const Rgb text = selected ? skin.controlText : textColourOf(row, skin);

    int left = rect.left;
    for (int column = 0; column < kColumnCount; ++column) {
        const int width = ListView_GetColumnWidth(list_, column);
        RECT cell{left + cellPadding, rect.top, left + width - cellPadding / 2, rect.bottom};
        left += width;
        if (cell.right <= cell.left) {
            continue;
        }
        const int middle = rect.top + (rect.bottom - rect.top) / 2;
        if (column == 0) {
            const RECT box{cell.left, middle - iconSize / 2, cell.left + iconSize, middle + iconSize / 2};
            if (const auto icon = rowIcons_.find(row.key); icon != rowIcons_.end()) {
                DrawIconEx(item.hDC, box.left, box.top, icon->second.get(), iconSize, iconSize, 0, nullptr,
                           DI_NORMAL);
            } else {
                drawBadge(item.hDC, box, row, skin);
            }
            cell.left += iconSize + cellPadding;
        }
        if (column == 4) {
            const auto rating = ratings_.find(row.key);
            if (rating == ratings_.end() || rating->second.count <= 0) {
                continue;
            }
            // The star is drawn rather than typed: not every font has U+2605.
            const RECT star{cell.left, middle - starSize / 2, cell.left + starSize, middle + starSize / 2};
            drawStar(item.hDC, star, kStarColour, kStarColour);
            cell.left += starSize + scaledForDpi(4, dpi);
            const std::wstring rest = cellText(static_cast<int>(item.itemID), 4).substr(2);
            SetTextColor(item.hDC, toColorRef(text));
            DrawTextW(item.hDC, rest.c_str(), -1, &cell,
                      DT_LEFT | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
            continue;
        }
        const bool isSecondary = column == 2 || column == 3;
        SetTextColor(item.hDC, toColorRef(isSecondary && !selected ? mix(text, background, 25) : text));
        const std::wstring cellString = cellText(static_cast<int>(item.itemID), column);
        DrawTextW(item.hDC, cellString.c_str(), -1, &cell,
                  DT_LEFT | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
    }
}

LRESULT MainWindow::onNotify(const NMHDR& header) {
    switch (header.code) {
    case LVN_GETDISPINFOW:
        fillDisplayInfo(*reinterpret_cast<NMLVDISPINFOW*>(const_cast<NMHDR*>(&header)));
        return 0;
    case LVN_ITEMCHANGED: {
        const auto& change = reinterpret_cast<const NMLISTVIEW&>(header);
        trackSelection(change);
        if (!isRefilling_ && ((change.uNewState ^ change.uOldState) & LVIS_SELECTED) != 0) {
            fillDetails();
        }
        return 0;
    }
    case NM_RCLICK:
        showRowMenu();
        return 0;
    case NM_DBLCLK:
        onListDoubleClick(reinterpret_cast<const NMITEMACTIVATE&>(header).iItem);
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

} // namespace corvandell::win
