// The store watcher against real folder and registry changes: one message per burst, only
// after the quiet spell.
#include <windows.h>

#include "stores/win/StoreWatcher.hpp"

#include "base/win/WideText.hpp"
#include "stores/win/RegistryScratch.hpp"
#include "support/TempFolder.hpp"
#include "support/win/MessagePump.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell::win {
namespace {

constexpr UINT kStoresChanged = WM_APP + 60;
// GetTickCount64 moves in steps of up to 16 ms on Windows, so a wait can look that much short.
constexpr ULONGLONG kTickSlackMs = 20;
// After the first message, how long a second one is waited for.
constexpr DWORD kSecondMessageWaitMs = 1500;

LRESULT CALLBACK recordArrival(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == kStoresChanged) {
        auto* arrivals = reinterpret_cast<std::vector<ULONGLONG>*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        arrivals->push_back(GetTickCount64());
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

class StoreWatcherTest : public ::testing::Test {
protected:
    void SetUp() override {
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = &recordArrival;
        windowClass.lpszClassName = L"CorvandellStoreWatcherTest";
        RegisterClassW(&windowClass); // fails harmlessly for every test after the first
        window_ = CreateWindowExW(0, windowClass.lpszClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                  nullptr, nullptr);
        ASSERT_NE(window_, nullptr);
        SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&arrivals_));
    }
    void TearDown() override {
        watcher_.stop();
        DestroyWindow(window_);
        test::deleteKeyTreeInBothViews(HKEY_LOCAL_MACHINE, L"SOFTWARE\\" + keyName_);
    }

    // Pumps until the first message and then a while longer, so that a second one shows.
    void pumpMessages() {
        test::pumpUntil([&] { return !arrivals_.empty(); }, 10000);
        test::pumpUntil([] { return false; }, kSecondMessageWaitMs);
    }

    HWND window_ = nullptr;
    std::vector<ULONGLONG> arrivals_;
    test::TempFolder folder_;
    const std::wstring keyName_ = test::uniqueKeyName();
    StoreWatcher watcher_;
};

TEST_F(StoreWatcherTest, ABurstOfFileChangesGivesOneMessageAfterTheQuietSpell) {
    const auto storage = folder_.path() / L"storage";
    std::filesystem::create_directory(storage);
    // What cannot be watched is left out, and what does not fit into one wait is dropped;
    // the folders that remain are still watched.
    std::vector<WatchedFolder> folders{{folder_.path() / L"missing", false}, {storage, false}};
    for (int i = 0; i < MAXIMUM_WAIT_OBJECTS; ++i) {
        folders.push_back({folder_.path() / (L"extra" + std::to_wstring(i)), false});
        std::filesystem::create_directory(folders.back().path);
    }
    watcher_.start(window_, kStoresChanged, folders,
                   {{RegistryHive::LocalMachine, "SOFTWARE\\" + narrow(keyName_)}});
    Sleep(100);
    // Taken before each write, so the last change happens no earlier than this.
    ULONGLONG lastChange = 0;
    for (int i = 0; i < 20; ++i) {
        Sleep(50);
        lastChange = GetTickCount64();
        folder_.writeFile(L"storage/record" + std::to_wstring(i) + L".json", "{}");
    }
    pumpMessages();
    ASSERT_EQ(arrivals_.size(), 1u);
    EXPECT_GE(arrivals_[0] - lastChange, kStoreQuietMs - kTickSlackMs);
}

TEST_F(StoreWatcherTest, ValuesWrittenUnderAWatchedKeyOfTheThirtyTwoBitViewGiveOneMessage) {
    const std::wstring key = L"HKLM\\SOFTWARE\\" + keyName_;
    ASSERT_EQ(test::regAdd(key, L"", L"", L"/reg:32").exitCode, 0u);
    watcher_.start(window_, kStoresChanged, {},
                   {{RegistryHive::LocalMachine, "SOFTWARE\\WOW6432Node\\" + narrow(keyName_)}});
    // The second value is seen only if the key was re-armed after the first one fired.
    ULONGLONG lastChange = 0;
    for (const wchar_t* value : {L"gameName", L"path"}) {
        Sleep(500);
        lastChange = GetTickCount64(); // reg.exe changes the key after this, before it exits
        const test::ChildResult added =
            test::regAdd(key + L"\\1400000001", value, L"Lantern Harbor", L"/reg:32");
        ASSERT_EQ(added.exitCode, 0u) << added.output;
    }
    pumpMessages();
    ASSERT_EQ(arrivals_.size(), 1u);
    EXPECT_GE(arrivals_[0] - lastChange, kStoreQuietMs - kTickSlackMs);
}

} // namespace
} // namespace corvandell::win
