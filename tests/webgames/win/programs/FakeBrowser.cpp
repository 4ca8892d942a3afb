// A stand-in browser for the browser-game tests. It behaves as much like a real browser as
// the launcher can tell: it records the command line it was given and, on a second line,
// the folder it was started in (as UTF-8, to a file beside itself named like it with
// ".command-line"), starts one child copy of itself as a
// browser starts its helper processes, shows one window, and stays up until that window is
// closed. The child has no window and ends when its parent has ended, after
//
//   --child-lingers-ms N   (from the options file beside it) milliseconds more,
//
// as a real browser's helpers take a moment to follow the main process.
#include <windows.h>

#include "launch/win/programs/ProgramOptions.hpp"

#include <cwchar>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr wchar_t kChildSwitch[] = L"--fake-browser-child";

std::string utf8(const std::wstring& text) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0,
                                         nullptr, nullptr);
    std::string out(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), out.data(), size, nullptr,
                        nullptr);
    return out;
}

// Written whole and then renamed, so a test never reads half a line.
void recordCommandLine() {
    std::filesystem::path file = corvandell::test::ownPath();
    file.replace_extension(L".command-line");
    std::filesystem::path partial = file;
    partial += L".partial";
    {
        std::ofstream out(partial, std::ios::binary | std::ios::trunc);
        std::wstring folder(32768, L'\0');
        folder.resize(GetCurrentDirectoryW(static_cast<DWORD>(folder.size()), folder.data()));
        out << utf8(GetCommandLineW()) << '\n' << utf8(folder);
    }
    MoveFileExW(partial.c_str(), file.c_str(), MOVEFILE_REPLACE_EXISTING);
}

int runChild(DWORD parentId, DWORD lingerMs) {
    HANDLE parent = OpenProcess(SYNCHRONIZE, FALSE, parentId);
    if (parent != nullptr) {
        WaitForSingleObject(parent, INFINITE);
        CloseHandle(parent);
    }
    Sleep(lingerMs);
    return 0;
}

bool startChild(DWORD lingerMs) {
    std::wstring commandLine = L"\"" + corvandell::test::ownPath() + L"\" " + kChildSwitch + L" " +
                               std::to_wstring(GetCurrentProcessId()) + L" " + std::to_wstring(lingerMs);
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION started{};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &started)) {
        return false;
    }
    CloseHandle(started.hThread);
    CloseHandle(started.hProcess);
    return true;
}

LRESULT CALLBACK browserProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CLOSE:
        DestroyWindow(window);
        return 0;
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

} // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int) {
    const std::vector<std::wstring> options = corvandell::test::programOptions();
    if (options.size() >= 3 && options[0] == kChildSwitch) {
        return runChild(static_cast<DWORD>(std::wcstoul(options[1].c_str(), nullptr, 10)),
                        static_cast<DWORD>(std::wcstoul(options[2].c_str(), nullptr, 10)));
    }
    recordCommandLine();
    DWORD lingerMs = 0;
    for (size_t i = 0; i + 1 < options.size(); ++i) {
        if (options[i] == L"--child-lingers-ms") {
            lingerMs = static_cast<DWORD>(std::wcstoul(options[i + 1].c_str(), nullptr, 10));
        }
    }
    if (!startChild(lingerMs)) {
        return 3;
    }
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = &browserProcedure;
    windowClass.hInstance = instance;
    windowClass.lpszClassName = L"CorvandellFakeBrowser";
    RegisterClassW(&windowClass);
    HWND window =
        CreateWindowExW(0, L"CorvandellFakeBrowser", L"Fake Browser", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 60,
                        60, 320, 200, nullptr, nullptr, instance, nullptr);
    if (window == nullptr) {
        return 2;
    }
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return 0;
}
