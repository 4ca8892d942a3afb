// Finding a game's process among all processes, for hand-offs and for re-attaching.
//
// A process id alone names nothing for long: ids are reused as soon as a process is gone.
// So a process is always named by its id and its creation time, and one found by folder
// must have been created after the launch that it is taken to belong to.
#pragma once

#include <windows.h>

#include "base/win/UniqueHandle.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace corvandell::win {

struct FoundProcess {
    UniqueKernelHandle process; // SYNCHRONIZE and limited query access
    DWORD processId = 0;
    std::uint64_t created = 0; // FILETIME ticks
    std::wstring image;        // the full path of its executable
};

// The creation time of a process (FILETIME ticks), 0 when it cannot be read.
std::uint64_t processCreationTime(HANDLE process) noexcept;
// The full path of the process's program; empty when it cannot be read.
std::wstring processImagePath(HANDLE process);
// Now, in the same ticks.
std::uint64_t currentFileTime() noexcept;

// The earliest process, other than this one, whose image lies under `folder` and that was
// created at or after `createdAfter`.
std::optional<FoundProcess> findProcessUnder(const std::wstring& folder, std::uint64_t createdAfter);

// The process with this id if it is still the one created at `created`; empty otherwise.
UniqueKernelHandle openSameProcess(DWORD processId, std::uint64_t created);

} // namespace corvandell::win
