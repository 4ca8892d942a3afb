// The real corvandell.exe started as a user would, in a data folder of the test's own, and
// driven from outside the way a user drives it: its windows, its tray menu, its status line.
#pragma once

#include <windows.h>

#include "base/win/UniqueHandle.hpp"

#include <filesystem>
#include <optional>
#include <string>

namespace corvandell::test {

class ClientUnderTest {
public:
    // Starts the client in `workingFolder` with APPDATA and LOCALAPPDATA set for it alone;
    // every other variable is this process's. `showCommand` is what a shortcut would ask
    // for (SW_SHOWMINNOACTIVE for "Run: Minimised"; -1 for the default); `executable` is
    // the built corvandell.exe unless given; `arguments` follow it on the command line.
    ClientUnderTest(const std::filesystem::path& appData, const std::filesystem::path& localAppData,
                    const std::filesystem::path& workingFolder, int showCommand = -1,
                    const std::filesystem::path& executable = {}, const std::wstring& arguments = {});
    // A client still running is killed, so a failed test leaves nothing behind.
    ~ClientUnderTest();
    ClientUnderTest(const ClientUnderTest&) = delete;
    ClientUnderTest& operator=(const ClientUnderTest&) = delete;

    bool isStarted() const noexcept { return static_cast<bool>(process_); }
    DWORD processId() const noexcept { return processId_; }

    // This client's main window once it is shown; nullptr if it never came or the client
    // ended.
    HWND waitForWindow(DWORD timeoutMs) const;
    // Its sign-in window once it is shown; nullptr if it never came or the client ended.
    HWND waitForSignInWindow(DWORD timeoutMs) const;
    // A message box this client shows (dialog class "#32770"); nullptr if none came.
    HWND waitForMessageBox(DWORD timeoutMs) const;
    // Ends it at once, as a crash or the task manager would: nothing of it runs on.
    void kill();
    // The exit code, or nothing when the client is still running after `timeoutMs`.
    std::optional<DWORD> waitForExit(DWORD timeoutMs) const;

private:
    HWND waitForShown(const wchar_t* className, const wchar_t* title, DWORD timeoutMs) const;

    win::UniqueKernelHandle process_;
    DWORD processId_ = 0;
};

// Another process's window text, read through WM_GETTEXT as any other program would.
std::wstring windowTextOf(HWND window);

// The text of a message box (its static control), and the main window's status line.
std::wstring messageBoxText(HWND box);
std::wstring statusLineOf(HWND mainWindow);

// Waits until the status line starts with the text (true) or `timeoutMs` passes (false).
bool waitForStatusLine(HWND mainWindow, const std::wstring& startingWith, DWORD timeoutMs);

// Right-clicks the tray icon (its callback message) and picks "Exit" with the keyboard
// once the menu is open; false when no menu appeared.
bool chooseExitFromTrayMenu(HWND mainWindow, DWORD processId);

} // namespace corvandell::test
