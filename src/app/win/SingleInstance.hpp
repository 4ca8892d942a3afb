// One client per data folder. A second corvandell.exe started on the same folder would load
// settings.json and library.json, and on exit write its own view of them over the first
// client's, so it only brings the running client's window to the front and ends.
//
// The claim is a named mutex whose name comes from the data folder, not a fixed one: two
// users, or two test runs with their own APPDATA, never stand in each other's way. The
// first client owns the mutex, so a second one can tell when it has ended.
//
// The first client also makes a message-only window, the beacon, named by the same folder
// key, at once and before anything else: a second start must reach the first one even
// while it is still reading its files or showing the sign-in window, when there is no main
// window to find yet. The beacon runs on the UI thread and answers by bringing forward the
// main window, or the sign-in window while that is all there is.
#pragma once

#include <windows.h>

#include "base/win/UniqueHandle.hpp"

#include <cstdint>
#include <filesystem>

namespace corvandell::win {

// The same key for the same folder however it is spelled (letter case, "..", separators).
std::uint64_t dataFolderKey(const std::filesystem::path& dataFolder);

// The message the main window answers by showing and activating itself when its lParam
// is the key of its own data folder.
UINT showRunningClientMessage() noexcept;

class SingleInstance {
public:
    // Claims the folder for this process for as long as the object lives; call it on the
    // UI thread, whose message loops serve the beacon.
    explicit SingleInstance(const std::filesystem::path& dataFolder);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    // False when another client already holds the folder.
    bool isFirst() const noexcept { return isFirst_; }

    // Asks the client holding the folder to come to the front and lets it take the
    // foreground, which Windows grants only to the process the user just started. Waits up
    // to `timeoutMs` for its beacon. True when this process should end: the request was
    // delivered, or the running client does not answer. False when the running client
    // ended meanwhile and this process now holds the folder: it starts as the client.
    bool handOverToRunningClient(DWORD timeoutMs = 10000);

private:
    void raiseBeacon() noexcept;

    std::uint64_t key_;
    UniqueKernelHandle mutex_;
    HWND beacon_ = nullptr;
    bool isFirst_ = true;
    bool ownsMutex_ = false;
};

} // namespace corvandell::win
