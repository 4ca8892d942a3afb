// A user's folders for the real corvandell.exe, all under one temp folder of the test's own:
// Roaming (APPDATA, holding the data folder) and Local (LOCALAPPDATA), started in from there.
#pragma once

#include <windows.h>

#include "support/TempFolder.hpp"
#include "support/win/ClientUnderTest.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace corvandell::test {

class ClientFolders {
public:
    // `user` is a folder for the user's two, such as a name with non-ASCII letters.
    explicit ClientFolders(std::filesystem::path user = {}) : user_(std::move(user)) {}

    const TempFolder& temp() const { return temp_; }
    std::filesystem::path appData() const { return temp_.path() / user_ / "Roaming"; }
    std::filesystem::path localAppData() const { return temp_.path() / user_ / "Local"; }
    std::filesystem::path dataFolder() const { return appData() / "Corvandell"; }

    // Writes a file into the data folder, creating it.
    void writeDataFile(const std::string& name, std::string_view bytes) const {
        temp_.writeFile(user_ / "Roaming" / "Corvandell" / name, bytes);
    }
    std::string readDataFile(const std::string& name) const { return readTestFile(dataFolder() / name); }

    // The client started as a shortcut would start it (`showCommand` -1 for the default).
    std::unique_ptr<ClientUnderTest> start(int showCommand = -1) const {
        return std::make_unique<ClientUnderTest>(appData(), localAppData(), temp_.path(), showCommand);
    }

private:
    TempFolder temp_;
    std::filesystem::path user_;
};

// Exit from the tray menu, and the client ends with 0.
inline void exitFromTrayMenu(const ClientUnderTest& client, HWND window) {
    ASSERT_TRUE(chooseExitFromTrayMenu(window, client.processId())) << "no tray menu opened";
    EXPECT_EQ(client.waitForExit(20000), 0u) << "the client did not exit cleanly";
}

// Polls without pumping messages (the windows are another process's) until `done` is true;
// false when `timeoutMs` passed first.
inline bool waitUntil(const std::function<bool()>& done, DWORD timeoutMs) {
    const ULONGLONG deadline = GetTickCount64() + timeoutMs;
    while (!done()) {
        if (GetTickCount64() >= deadline) {
            return false;
        }
        Sleep(20);
    }
    return true;
}

} // namespace corvandell::test
