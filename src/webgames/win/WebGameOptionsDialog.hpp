// The per-game options of a browser game: which browser runs it. The first entry,
// Automatic, means Edge or Chrome as found on each launch; the others are the browsers the
// system lists. Save keeps the choice in the settings' webGameBrowsers (Automatic removes
// the game's entry), writes settings.json through the main window's guard and says so in
// the main window's status line; Cancel changes nothing.
//
// It is modeless and owns itself, like the client's other dialogs. It knows nothing of
// skins or of the client's keyboard hook: the main window hands both in.
#pragma once

#include <windows.h>

#include "base/Settings.hpp"
#include "base/win/UniqueHandle.hpp"
#include "base/win/Window.hpp"
#include "webgames/BrowserChoice.hpp"

#include <functional>
#include <string>
#include <vector>

namespace corvandell::win {

// How the dialog is painted and keyed; the defaults are the system's look and no keys.
struct WebGameOptionsLook {
    // Offered every message first; true when it handled it. With a hook, buttons are
    // owner-drawn and the hook paints them.
    bool (*messageHook)(HWND, UINT, WPARAM, LPARAM, LRESULT& result) noexcept = nullptr;
    void (*trackButtonHover)(HWND button) noexcept = nullptr;
    // Tab, Enter and Escape in a message loop that is not the dialog's own.
    void (*addDialogKeys)(HWND dialog) = nullptr;
    void (*removeDialogKeys)(HWND dialog) noexcept = nullptr;
    void (*nextControl)(HWND dialog, WPARAM wParam, LPARAM lParam) noexcept = nullptr;
};

struct WebGameOptionsHost {
    HWND owner = nullptr;
    Settings* settings = nullptr; // the main window's; changed on Save only
    std::string gameKey;
    std::wstring gameName;
    std::vector<BrowserEntry> browsers;
    // Writes settings.json: "" when saved, else what went wrong.
    std::function<std::string()> saveSettings;
    std::function<void(const std::wstring& text)> showStatus;
    WebGameOptionsLook look;
};

class WebGameOptionsDialog final : public Window {
public:
    static constexpr wchar_t kClassName[] = L"CorvandellWebGameOptions";
    static constexpr wchar_t kAutomatic[] = L"Automatic (Microsoft Edge or Google Chrome)";
    static constexpr int kBrowserList = 10;
    static constexpr int kLabel = 11;

    // Creates and shows the dialog; null when it could not be created.
    static WebGameOptionsDialog* open(HINSTANCE instance, WebGameOptionsHost host, int showCommand = SW_SHOW);

    HWND control(int id) const noexcept { return GetDlgItem(hwnd_, id); }

private:
    WebGameOptionsDialog(HINSTANCE instance, WebGameOptionsHost host)
        : instance_(instance), host_(std::move(host)) {}
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    LRESULT route(UINT message, WPARAM wParam, LPARAM lParam);
    void onFinalMessage() noexcept override { delete this; }
    void onCreate();
    void fillBrowsers();
    void layout();
    void save();

    HINSTANCE instance_;
    WebGameOptionsHost host_;
    std::vector<std::string> commands_; // per list entry: the open command, "" for Automatic
    UINT dpi_ = 96;
    UniqueFont font_;
};

} // namespace corvandell::win
