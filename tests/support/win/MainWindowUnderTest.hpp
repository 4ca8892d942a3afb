// A main window in this process, in a data folder of the test's own. The test sets its
// settings and jobs, then opens it and drives it as a user would: select a row, press the
// action button, read the status line.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include "app/SettingsFile.hpp"
#include "app/Skins.hpp"
#include "app/win/MainWindow.hpp"
#include "base/win/WideText.hpp"
#include "support/TempFolder.hpp"
#include "support/win/MessagePump.hpp"
#include "support/win/ServiceStandIn.hpp"
#include "support/win/StatusRecorder.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace corvandell::test {

class MainWindowUnderTest {
public:
    MainWindowUnderTest() { applyTheme(builtInSkins()[0]); }

    // A fresh session of `username` with the service stand-in, in place of no session at all.
    void signIn(const std::string& username) {
        const Settings session = win::signedInSettings(username);
        settings.apiBaseUrl = session.apiBaseUrl;
        settings.bearerToken = session.bearerToken;
        settings.refreshToken = session.refreshToken;
        settings.username = session.username;
    }

    // Refresh jobs that answer `result` whatever the search.
    void answerRefreshes(LibraryResult result) {
        jobs.makeRefresh = [result](const std::string&) { return [result] { return result; }; };
    }

    // Fails with why: whether the window was refused or destroyed while it was being
    // created, and CreateWindowExW's error, which create() returns on with untouched.
    ::testing::AssertionResult open(int showCommand = SW_HIDE) {
        std::filesystem::create_directories(paths.dataFolder);
        window = std::make_unique<win::MainWindow>(GetModuleHandleW(nullptr), paths, settings,
                                                   settingsFileIn(paths.dataFolder), std::move(jobs));
        const ULONGLONG start = GetTickCount64();
        const CreationWatch watch;
        if (!window->create(showCommand)) {
            const DWORD error = GetLastError();
            WNDCLASSEXW registered{};
            registered.cbSize = sizeof(registered);
            const bool isRegistered =
                GetClassInfoExW(GetModuleHandleW(nullptr), kMainClass, &registered) != FALSE;
            return ::testing::AssertionFailure()
                   << "MainWindow::create failed after " << GetTickCount64() - start
                   << " ms: CreateWindowExW error " << error << ", window class "
                   << (isRegistered ? "registered" : "not registered") << ", " << watch.story() << ", "
                   << windowsOfThisThread() << " other windows on this thread";
        }
        status = std::make_unique<StatusTexts>(window->control(win::control::Status));
        return ::testing::AssertionSuccess();
    }

    win::MainWindow* operator->() const { return window.get(); }

    bool waitForStatus(const std::wstring& startingWith, DWORD timeoutMs = 30'000) const {
        return pumpUntil([&] { return window->statusText().starts_with(startingWith); }, timeoutMs);
    }
    // Whether the status line was given a text starting so since it was opened (or cleared).
    bool sawStatus(const std::wstring& startingWith) const { return status->sawStart(startingWith); }
    bool waitForSawStatus(const std::wstring& startingWith, DWORD timeoutMs = 30'000) const {
        return pumpUntil([&] { return sawStatus(startingWith); }, timeoutMs);
    }
    // The texts seen, for a failure's message.
    std::string statusTexts() const { return status->joined(); }

    // The row with this key or name; -1 when there is none.
    int rowOf(const std::string& keyOrName) const {
        const auto& rows = window->rows();
        const auto found = std::find_if(rows.begin(), rows.end(), [&](const LibraryItem& row) {
            return row.key == keyOrName || row.name == keyOrName;
        });
        return found == rows.end() ? -1 : static_cast<int>(found - rows.begin());
    }
    const LibraryItem& row(const std::string& keyOrName) const {
        return window->rows().at(static_cast<size_t>(rowOf(keyOrName)));
    }
    bool select(const std::string& keyOrName) const {
        const int index = rowOf(keyOrName);
        ListView_SetItemState(window->control(win::command::List), index, LVIS_SELECTED | LVIS_FOCUSED,
                              LVIS_SELECTED | LVIS_FOCUSED);
        return index >= 0;
    }
    // The action button (Install, Launch, Stop...), as a click sends it.
    void pressAction() const {
        SendMessageW(window->hwnd(), WM_COMMAND, MAKEWPARAM(win::command::Launch, BN_CLICKED),
                     reinterpret_cast<LPARAM>(window->control(win::command::Launch)));
    }
    std::wstring actionLabel() const { return win::hwndText(window->control(win::command::Launch)); }

private:
    static constexpr wchar_t kMainClass[] = L"CorvandellClientWindow";

    // What happened to main windows made on this thread while it lives, seen by a CBT hook:
    // refused by a hook or the class, or made and destroyed again before create() returned.
    class CreationWatch {
    public:
        CreationWatch() {
            current() = this;
            hook_ = SetWindowsHookExW(WH_CBT, &CreationWatch::procedure, nullptr, GetCurrentThreadId());
            hookError_ = hook_ == nullptr ? GetLastError() : 0;
        }
        ~CreationWatch() {
            UnhookWindowsHookEx(hook_);
            current() = nullptr;
        }
        CreationWatch(const CreationWatch&) = delete;
        CreationWatch& operator=(const CreationWatch&) = delete;

        std::string story() const {
            if (hook_ == nullptr) {
                return "no CBT hook (error " + std::to_string(hookError_) + ")";
            }
            return std::to_string(created_) + " main window(s) began creation, " +
                   std::to_string(destroyed_) + " destroyed during create()";
        }

    private:
        static CreationWatch*& current() {
            thread_local CreationWatch* watch = nullptr;
            return watch;
        }
        static LRESULT CALLBACK procedure(int code, WPARAM wParam, LPARAM lParam) {
            CreationWatch* self = current();
            if (self != nullptr && code == HCBT_CREATEWND) {
                const auto* create = reinterpret_cast<const CBT_CREATEWNDW*>(lParam)->lpcs;
                if (!IS_INTRESOURCE(create->lpszClass) &&
                    std::wstring_view(create->lpszClass) == kMainClass) {
                    ++self->created_;
                    self->window_ = reinterpret_cast<HWND>(wParam);
                }
            } else if (self != nullptr && code == HCBT_DESTROYWND &&
                       reinterpret_cast<HWND>(wParam) == self->window_) {
                ++self->destroyed_;
            }
            return CallNextHookEx(nullptr, code, wParam, lParam);
        }

        HHOOK hook_ = nullptr;
        DWORD hookError_ = 0;
        HWND window_ = nullptr;
        int created_ = 0;
        int destroyed_ = 0;
    };

    static int windowsOfThisThread() {
        int count = 0;
        EnumThreadWindows(
            GetCurrentThreadId(),
            [](HWND, LPARAM counted) {
                ++*reinterpret_cast<int*>(counted);
                return TRUE;
            },
            reinterpret_cast<LPARAM>(&count));
        return count;
    }

public:
    TempFolder folder;
    DataPaths paths{folder.path() / "data", folder.path() / "games"};
    Settings settings = defaultSettings(paths.defaultLibraryFolder);
    win::MainWindowJobs jobs;
    std::unique_ptr<StatusTexts> status; // outlives the window it watches
    std::unique_ptr<win::MainWindow> window;
};

// The requests the stand-in received after the first `before` of them.
inline std::vector<std::string> requestsSince(size_t before) {
    std::vector<std::string> calls = win::receivedRequests();
    calls.erase(calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(std::min(before, calls.size())));
    return calls;
}

// The session calls (opened, ended; a title's launch) among them, in order.
inline std::vector<std::string> sessionCallsSince(size_t before) {
    std::vector<std::string> calls = requestsSince(before);
    std::erase_if(calls, [](const std::string& call) {
        return !call.starts_with("POST /api/v1/activity/") && call.find("/launch") == std::string::npos;
    });
    return calls;
}

} // namespace corvandell::test
