// A stand-in game for the launch tests: one visible top-level window, as a real game has,
// with the misbehaviours a launcher meets in the wild chosen by its options.
//
//   --ignore-close     WM_CLOSE does nothing; only termination ends it
//   --no-idle-ms N     sleeps N ms before it has a window or a message loop, so it never
//                      becomes input-idle in that time
//   --exit-after-ms N  closes itself after N ms
//   --report-env FILE  writes the Steam variables and CORVANDELL_ENV_PROBE it was given to
//                      FILE, one "NAME=value" a line ("NAME" alone when unset)
#include <windows.h>

#include "ProgramOptions.hpp"

#include <cwchar>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

bool isIgnoringClose = false;

LRESULT CALLBACK gameProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CLOSE:
        if (!isIgnoringClose) {
            DestroyWindow(window);
        }
        return 0;
    case WM_TIMER:
        DestroyWindow(window);
        return 0;
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

void reportEnvironment(const std::wstring& file) {
    std::wofstream out{std::filesystem::path(file)};
    for (const wchar_t* name :
         {L"SteamAppId", L"SteamGameId", L"SteamNoOverlayUIDrawing", L"CORVANDELL_ENV_PROBE"}) {
        wchar_t value[256] = {};
        if (GetEnvironmentVariableW(name, value, 256) == 0) {
            out << name << L"\n";
        } else {
            out << name << L"=" << value << L"\n";
        }
    }
}

} // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int) {
    const std::vector<std::wstring> options = corvandell::test::programOptions();
    DWORD noIdleMs = 0;
    UINT exitAfterMs = 0;
    for (size_t i = 0; i < options.size(); ++i) {
        const bool hasValue = i + 1 < options.size();
        if (options[i] == L"--ignore-close") {
            isIgnoringClose = true;
        } else if (options[i] == L"--no-idle-ms" && hasValue) {
            noIdleMs = static_cast<DWORD>(std::wcstoul(options[++i].c_str(), nullptr, 10));
        } else if (options[i] == L"--exit-after-ms" && hasValue) {
            exitAfterMs = static_cast<UINT>(std::wcstoul(options[++i].c_str(), nullptr, 10));
        } else if (options[i] == L"--report-env" && hasValue) {
            reportEnvironment(options[++i]);
        }
    }
    if (noIdleMs != 0) {
        Sleep(noIdleMs);
    }
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = &gameProcedure;
    windowClass.hInstance = instance;
    windowClass.lpszClassName = L"CorvandellTestGame";
    RegisterClassW(&windowClass);
    HWND window =
        CreateWindowExW(0, L"CorvandellTestGame", L"Corvandell Test Game", WS_OVERLAPPEDWINDOW | WS_VISIBLE,
                        40, 40, 320, 200, nullptr, nullptr, instance, nullptr);
    if (window == nullptr) {
        return 2;
    }
    if (exitAfterMs != 0) {
        SetTimer(window, 1, exitAfterMs, nullptr);
    }
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return 0;
}
