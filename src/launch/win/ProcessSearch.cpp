#include "launch/win/ProcessSearch.hpp"

#include <tlhelp32.h>

#include "launch/ProcessImage.hpp"

namespace corvandell::win {
namespace {

constexpr DWORD kFollowAccess = SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION;

std::uint64_t ticksOf(const FILETIME& time) {
    return (static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

} // namespace

std::wstring processImagePath(HANDLE process) {
    std::wstring image(32768, L'\0');
    DWORD length = static_cast<DWORD>(image.size());
    if (!QueryFullProcessImageNameW(process, 0, image.data(), &length)) {
        return {};
    }
    image.resize(length);
    return image;
}

std::uint64_t processCreationTime(HANDLE process) noexcept {
    FILETIME created{};
    FILETIME exited{};
    FILETIME kernel{};
    FILETIME user{};
    if (!GetProcessTimes(process, &created, &exited, &kernel, &user)) {
        return 0;
    }
    return ticksOf(created);
}

std::uint64_t currentFileTime() noexcept {
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    return ticksOf(now);
}

std::optional<FoundProcess> findProcessUnder(const std::wstring& folder, std::uint64_t createdAfter) {
    const UniqueKernelHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    if (!snapshot) {
        return std::nullopt;
    }
    std::optional<FoundProcess> best;
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Process32FirstW(snapshot.get(), &entry); more;
         more = Process32NextW(snapshot.get(), &entry)) {
        if (entry.th32ProcessID == 0 || entry.th32ProcessID == GetCurrentProcessId()) {
            continue;
        }
        UniqueKernelHandle process(OpenProcess(kFollowAccess, FALSE, entry.th32ProcessID));
        if (!process || WaitForSingleObject(process.get(), 0) != WAIT_TIMEOUT) {
            continue;
        }
        const std::uint64_t created = processCreationTime(process.get());
        if (created < createdAfter || (best && created >= best->created)) {
            continue;
        }
        std::wstring image = processImagePath(process.get());
        if (!isImageUnderFolder(image, folder)) {
            continue;
        }
        best = FoundProcess{std::move(process), entry.th32ProcessID, created, std::move(image)};
    }
    return best;
}

UniqueKernelHandle openSameProcess(DWORD processId, std::uint64_t created) {
    UniqueKernelHandle process(OpenProcess(kFollowAccess | PROCESS_TERMINATE, FALSE, processId));
    if (!process || processCreationTime(process.get()) != created ||
        WaitForSingleObject(process.get(), 0) != WAIT_TIMEOUT) {
        return {};
    }
    return process;
}

} // namespace corvandell::win
