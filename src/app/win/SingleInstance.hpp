// One client per data folder. A second corvandell.exe started on the same folder would load
// settings.json and library.json, and on exit write its own view of them over the first
// client's, so it only brings the running client's window to the front and ends.
//
// The claim is a named mutex whose name comes from the data folder, not a fixed one: two
// users, or two test runs with their own APPDATA, never stand in each other's way. The
// request to show itself is a registered message posted to every top-level window; its
// lParam carries the same folder key, so only the client of that folder answers.
#pragma once

#include <windows.h>

#include "base/win/UniqueHandle.hpp"

#include <cstdint>
#include <filesystem>

namespace corvandell::win {

// The same key for the same folder however it is spelled (letter case, "..", separators).
std::uint64_t dataFolderKey(const std::filesystem::path& dataFolder);

// The message the running client answers by showing and activating its main window.
UINT showRunningClientMessage() noexcept;

class SingleInstance {
public:
    // Claims the folder for this process for as long as the object lives.
    explicit SingleInstance(const std::filesystem::path& dataFolder);

    // False when another client already holds the folder.
    bool isFirst() const noexcept { return isFirst_; }

    // Asks the client holding the folder to come to the front, and lets it take the
    // foreground, which Windows grants only to the process the user just started.
    void activateRunningClient() const noexcept;

private:
    std::uint64_t key_;
    UniqueKernelHandle mutex_;
    bool isFirst_ = true;
};

} // namespace corvandell::win
