// The options dialog's controls as tables: class, text, style and place, laid out in
// pixels at 96 dots per inch and scaled to the dialog's DPI when placed. Each tab file owns
// its table; creation order is tab order, so each table lists its controls in the order
// Tab should visit them.
#pragma once

#include <windows.h>

#include "app/win/OptionsIds.hpp"

#include <span>

namespace corvandell::win::options {

struct OptionsControl {
    int id;
    const wchar_t* className;
    const wchar_t* text;
    DWORD style; // besides WS_CHILD; WS_VISIBLE is managed by the tab switch
    int x;
    int y;
    int width;
    int height;
};

// The dialog's client area at 96 dots per inch.
inline constexpr int kClientWidth = 560;
inline constexpr int kClientHeight = 470;
// Where a tab's fields start, right of their labels.
inline constexpr int kLabelX = 24;
inline constexpr int kLabelWidth = 168;
inline constexpr int kFieldX = 200;
inline constexpr int kFieldWidth = 336;

std::span<const OptionsControl> connectionControls();
std::span<const OptionsControl> downloadsControls();
std::span<const OptionsControl> voiceControls();
std::span<const OptionsControl> appearanceControls();
std::span<const OptionsControl> profileControls();

inline constexpr DWORD kLabelStyle = SS_LEFT; // labels carry the & accelerators of their fields
inline constexpr DWORD kHintStyle = SS_LEFT | SS_NOPREFIX;
inline constexpr DWORD kEditStyle = WS_BORDER | WS_TABSTOP | ES_AUTOHSCROLL;
inline constexpr DWORD kButtonStyle = WS_TABSTOP | BS_PUSHBUTTON | BS_OWNERDRAW;

// Hints and read-only lines are drawn in the skin's muted colour.
bool isHintControl(int id) noexcept;

} // namespace corvandell::win::options
