#include "support/win/ClientUnderTest.hpp"

#include "app/win/Messages.hpp"
#include "support/win/ChildProcess.hpp"

#include <cwctype>
#include <vector>

namespace corvandell::test {

namespace {

bool isVariable(const std::wstring& entry, const std::wstring& name) {
    if (entry.size() <= name.size() || entry[name.size()] != L'=') {
        return false;
    }
    for (size_t i = 0; i < name.size(); ++i) {
        if (std::towupper(entry[i]) != std::towupper(name[i])) {
            return false;
        }
    }
    return true;
}

// This process's environment with the two folder variables replaced, as a Unicode block.
std::vector<wchar_t> environmentWith(const std::filesystem::path& appData,
                                     const std::filesystem::path& localAppData) {
    std::vector<std::wstring> entries;
    if (wchar_t* strings = GetEnvironmentStringsW(); strings != nullptr) {
        for (const wchar_t* entry = strings; *entry != L'\0'; entry += wcslen(entry) + 1) {
            const std::wstring text(entry);
            if (!isVariable(text, L"APPDATA") && !isVariable(text, L"LOCALAPPDATA")) {
                entries.push_back(text);
            }
        }
        FreeEnvironmentStringsW(strings);
    }
    entries.push_back(L"APPDATA=" + appData.wstring());
    entries.push_back(L"LOCALAPPDATA=" + localAppData.wstring());
    std::vector<wchar_t> block;
    for (const std::wstring& entry : entries) {
        block.insert(block.end(), entry.begin(), entry.end());
        block.push_back(L'\0');
    }
    block.push_back(L'\0');
    return block;
}

HWND findWindowOf(DWORD processId, const wchar_t* className, const wchar_t* title) {
    HWND window = nullptr;
    while ((window = FindWindowExW(nullptr, window, className, title)) != nullptr) {
        DWORD owner = 0;
        GetWindowThreadProcessId(window, &owner);
        if (owner == processId) {
            return window;
        }
    }
    return nullptr;
}

void pressKey(HWND window, WORD key) {
    PostMessageW(window, WM_KEYDOWN, key, 0);
    PostMessageW(window, WM_KEYUP, key, 0xC0000001);
}

} // namespace

ClientUnderTest::ClientUnderTest(const std::filesystem::path& appData,
                                 const std::filesystem::path& localAppData,
                                 const std::filesystem::path& workingFolder, int showCommand,
                                 const std::filesystem::path& executable, const std::wstring& arguments) {
    const std::filesystem::path program =
        executable.empty() ? siblingExecutable(L"corvandell.exe") : executable;
    std::wstring commandLine = L"\"" + program.wstring() + L"\"";
    if (!arguments.empty()) {
        commandLine += L" " + arguments;
    }
    std::vector<wchar_t> environment = environmentWith(appData, localAppData);
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    if (showCommand >= 0) {
        startup.dwFlags = STARTF_USESHOWWINDOW;
        startup.wShowWindow = static_cast<WORD>(showCommand);
    }
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, CREATE_UNICODE_ENVIRONMENT,
                        environment.data(), workingFolder.c_str(), &startup, &process)) {
        return;
    }
    process_.reset(process.hProcess);
    win::UniqueKernelHandle thread(process.hThread);
    processId_ = process.dwProcessId;
}

ClientUnderTest::~ClientUnderTest() {
    kill();
}

void ClientUnderTest::kill() {
    if (process_ && WaitForSingleObject(process_.get(), 0) == WAIT_TIMEOUT) {
        TerminateProcess(process_.get(), 99);
        WaitForSingleObject(process_.get(), 5000);
    }
}

HWND ClientUnderTest::waitForWindow(DWORD timeoutMs) const {
    return waitForShown(L"CorvandellClientWindow", L"Corvandell", timeoutMs);
}

HWND ClientUnderTest::waitForSignInWindow(DWORD timeoutMs) const {
    return waitForShown(L"CorvandellSignIn", L"Sign in - Corvandell", timeoutMs);
}

HWND ClientUnderTest::waitForShown(const wchar_t* className, const wchar_t* title, DWORD timeoutMs) const {
    if (!process_) {
        return nullptr;
    }
    // Another test process may show a window of the same class, so match the process too.
    const ULONGLONG deadline = GetTickCount64() + timeoutMs;
    while (GetTickCount64() < deadline && WaitForSingleObject(process_.get(), 50) == WAIT_TIMEOUT) {
        // Found before it is shown, the window is still being set up: hiding it then
        // would be undone by the client's own ShowWindow a moment later.
        if (HWND window = findWindowOf(processId_, className, title);
            window != nullptr && IsWindowVisible(window)) {
            return window;
        }
    }
    return nullptr;
}

HWND ClientUnderTest::waitForMessageBox(DWORD timeoutMs) const {
    const ULONGLONG deadline = GetTickCount64() + timeoutMs;
    while (process_ && GetTickCount64() < deadline) {
        if (HWND box = findWindowOf(processId_, L"#32770", nullptr); box != nullptr && IsWindowVisible(box)) {
            return box;
        }
        Sleep(50);
    }
    return nullptr;
}

std::optional<DWORD> ClientUnderTest::waitForExit(DWORD timeoutMs) const {
    if (!process_ || WaitForSingleObject(process_.get(), timeoutMs) != WAIT_OBJECT_0) {
        return std::nullopt;
    }
    DWORD exitCode = 0;
    GetExitCodeProcess(process_.get(), &exitCode);
    return exitCode;
}

std::wstring windowTextOf(HWND window) {
    DWORD_PTR length = 0;
    if (!SendMessageTimeoutW(window, WM_GETTEXTLENGTH, 0, 0, SMTO_ABORTIFHUNG, 5000, &length)) {
        return {};
    }
    std::wstring text(length + 1, L'\0');
    DWORD_PTR copied = 0;
    if (!SendMessageTimeoutW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()),
                             SMTO_ABORTIFHUNG, 5000, &copied)) {
        return {};
    }
    text.resize(copied);
    return text;
}

std::wstring messageBoxText(HWND box) {
    constexpr int kMessageBoxTextId = 0xFFFF; // the static control MessageBox puts the text in
    return windowTextOf(GetDlgItem(box, kMessageBoxTextId));
}

std::wstring statusLineOf(HWND mainWindow) {
    return windowTextOf(GetDlgItem(mainWindow, win::control::Status));
}

bool waitForStatusLine(HWND mainWindow, const std::wstring& startingWith, DWORD timeoutMs) {
    const ULONGLONG deadline = GetTickCount64() + timeoutMs;
    while (!statusLineOf(mainWindow).starts_with(startingWith)) {
        if (GetTickCount64() >= deadline) {
            return false;
        }
        Sleep(20);
    }
    return true;
}

bool chooseExitFromTrayMenu(HWND mainWindow, DWORD processId) {
    PostMessageW(mainWindow, win::MsgTrayIcon, 1, WM_RBUTTONUP);
    // The menu's modal loop reads every keyboard message of the client's UI thread, so keys
    // posted to the main window reach it; they must come after it opened.
    const ULONGLONG deadline = GetTickCount64() + 5000;
    for (;;) {
        if (HWND menu = findWindowOf(processId, L"#32768", nullptr);
            menu != nullptr && IsWindowVisible(menu)) {
            break;
        }
        if (GetTickCount64() >= deadline) {
            return false;
        }
        Sleep(20);
    }
    // Up wraps from the top to the last entry, "Exit".
    pressKey(mainWindow, VK_UP);
    pressKey(mainWindow, VK_RETURN);
    return true;
}

} // namespace corvandell::test
