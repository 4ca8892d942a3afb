// End to end: the real corvandell.exe started as a user would, with its own data folder.
#include <windows.h>

#include "app/SettingsFile.hpp"
#include "app/win/Messages.hpp"
#include "base/win/UniqueHandle.hpp"
#include "support/TempFolder.hpp"
#include "support/win/ChildProcess.hpp"

#include <gtest/gtest.h>

#include <string>

namespace corvandell::win {
namespace {

// Another test process may show a main window of its own, so match the process too.
HWND findClientWindow(DWORD processId) {
    HWND window = nullptr;
    while ((window = FindWindowExW(nullptr, window, L"CorvandellClientWindow", L"Corvandell")) != nullptr) {
        DWORD owner = 0;
        GetWindowThreadProcessId(window, &owner);
        if (owner == processId) {
            return window;
        }
    }
    return nullptr;
}

TEST(ClientProcess, StartsRewritesSettingsAndExitsCleanlyFromTheTrayMenu) {
    test::TempFolder folder;
    // A user name with non-ASCII letters must not lose the data folder.
    const auto appData = folder.path() / L"J\u00f6rg" / L"Roaming";
    const auto localAppData = folder.path() / L"J\u00f6rg" / L"Local";
    const auto dataFolder = appData / "Corvandell";
    folder.writeFile((dataFolder / "settings.json").lexically_relative(folder.path()), "{}");
    // The client inherits the folder variables; this test process is its own.
    SetEnvironmentVariableW(L"APPDATA", appData.c_str());
    SetEnvironmentVariableW(L"LOCALAPPDATA", localAppData.c_str());

    std::wstring commandLine = L"\"" + test::siblingExecutable(L"corvandell.exe").wstring() + L"\"";
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    ASSERT_TRUE(CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                               folder.path().c_str(), &startup, &process))
        << "error " << GetLastError();
    UniqueKernelHandle processHandle(process.hProcess);
    UniqueKernelHandle threadHandle(process.hThread);
    HWND window = nullptr;
    const ULONGLONG deadline = GetTickCount64() + 30000;
    while (window == nullptr && GetTickCount64() < deadline &&
           WaitForSingleObject(processHandle.get(), 50) == WAIT_TIMEOUT) {
        window = findClientWindow(process.dwProcessId);
    }
    if (window == nullptr) {
        TerminateProcess(processHandle.get(), 99);
        FAIL() << "the client's main window never appeared";
    }

    const std::string expectedSettings =
        formatSettings(defaultSettings(localAppData / "Corvandell" / "Games"));
    EXPECT_EQ(test::readTestFile(dataFolder / "settings.json"), expectedSettings);
    PostMessageW(window, WM_COMMAND, MAKEWPARAM(command::Exit, 0), 0);
    ASSERT_EQ(WaitForSingleObject(processHandle.get(), 20000), WAIT_OBJECT_0) << "the client did not exit";
    DWORD exitCode = 1;
    GetExitCodeProcess(processHandle.get(), &exitCode);
    EXPECT_EQ(exitCode, 0u);
    EXPECT_EQ(test::readTestFile(dataFolder / "settings.json"), expectedSettings);
    EXPECT_EQ(test::readTestFile(dataFolder / "library.json"), "[\n\n]\n");
}

} // namespace
} // namespace corvandell::win
