// End to end: the real corvandell.exe started as a user would, with its own data folder.

#include <windows.h>

#include "app/Settings.hpp"
#include "app/win/Messages.hpp"
#include "app/win/UniqueHandle.hpp"
#include "support/TempFolder.hpp"
#include "support/win/Screenshot.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace corvandell::win {
namespace {

std::filesystem::path clientExecutable() {
    wchar_t self[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    return std::filesystem::path(self).parent_path() / L"corvandell.exe";
}

// The current environment with the folder variables pointed into the test's folder.
std::vector<wchar_t> environmentWith(const std::filesystem::path& appData,
                                     const std::filesystem::path& localAppData) {
    std::vector<wchar_t> block;
    auto add = [&block](const std::wstring& entry) {
        block.insert(block.end(), entry.begin(), entry.end());
        block.push_back(L'\0');
    };
    wchar_t* current = GetEnvironmentStringsW();
    for (const wchar_t* entry = current; *entry != L'\0'; entry += wcslen(entry) + 1) {
        const std::wstring text = entry;
        if (_wcsnicmp(entry, L"APPDATA=", 8) != 0 && _wcsnicmp(entry, L"LOCALAPPDATA=", 13) != 0) {
            add(text);
        }
    }
    FreeEnvironmentStringsW(current);
    add(L"APPDATA=" + appData.wstring());
    add(L"LOCALAPPDATA=" + localAppData.wstring());
    block.push_back(L'\0');
    return block;
}

struct FindResult {
    DWORD processId;
    HWND window;
};

BOOL CALLBACK findClientWindow(HWND hwnd, LPARAM lParam) {
    auto* search = reinterpret_cast<FindResult*>(lParam);
    DWORD owner = 0;
    GetWindowThreadProcessId(hwnd, &owner);
    wchar_t className[64] = {};
    wchar_t title[64] = {};
    GetClassNameW(hwnd, className, 64);
    GetWindowTextW(hwnd, title, 64);
    if (owner == search->processId && wcscmp(className, L"CorvandellClientWindow") == 0 &&
        wcscmp(title, L"Corvandell") == 0) {
        search->window = hwnd;
        return FALSE;
    }
    return TRUE;
}

TEST(ClientProcess, StartsRewritesSettingsAndExitsCleanlyFromTheTrayMenu) {
    test::TempFolder folder;
    // A user name with non-ASCII letters must not lose the data folder.
    const auto appData = folder.path() / L"J\u00f6rg" / L"Roaming";
    const auto localAppData = folder.path() / L"J\u00f6rg" / L"Local";
    const auto dataFolder = appData / "Corvandell";
    folder.writeFile((dataFolder / "settings.json").lexically_relative(folder.path()), "{}");

    std::wstring commandLine = L"\"" + clientExecutable().wstring() + L"\"";
    std::vector<wchar_t> environment = environmentWith(appData, localAppData);
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    ASSERT_TRUE(CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE,
                               CREATE_UNICODE_ENVIRONMENT, environment.data(), folder.path().c_str(),
                               &startup, &process))
        << "cannot start " << clientExecutable().string() << ": error " << GetLastError();
    UniqueKernelHandle processHandle(process.hProcess);
    UniqueKernelHandle threadHandle(process.hThread);

    FindResult found{process.dwProcessId, nullptr};
    const ULONGLONG deadline = GetTickCount64() + 30000;
    while (found.window == nullptr && GetTickCount64() < deadline &&
           WaitForSingleObject(processHandle.get(), 0) == WAIT_TIMEOUT) {
        EnumWindows(&findClientWindow, reinterpret_cast<LPARAM>(&found));
        Sleep(50);
    }
    if (found.window == nullptr) {
        TerminateProcess(processHandle.get(), 99);
        FAIL() << "the client's main window never appeared";
    }

    const std::string expectedSettings =
        formatSettings(defaultSettings(localAppData / "Corvandell" / "Games"));
    EXPECT_EQ(test::readTestFile(dataFolder / "settings.json"), expectedSettings);
    EXPECT_NE(expectedSettings.find(std::string(kProductionApiBaseUrl)), std::string::npos);

    Sleep(500); // let the first paint and the refresh land before the picture
    test::saveWindowScreenshot(found.window, L"client-main-window.bmp");

    PostMessageW(found.window, WM_COMMAND, MAKEWPARAM(command::Exit, 0), 0);
    ASSERT_EQ(WaitForSingleObject(processHandle.get(), 20000), WAIT_OBJECT_0) << "the client did not exit";
    DWORD exitCode = 1;
    GetExitCodeProcess(processHandle.get(), &exitCode);
    EXPECT_EQ(exitCode, 0u);
    EXPECT_EQ(test::readTestFile(dataFolder / "settings.json"), expectedSettings);
    EXPECT_EQ(test::readTestFile(dataFolder / "library.json"), "[\n\n]\n");
}

} // namespace
} // namespace corvandell::win
