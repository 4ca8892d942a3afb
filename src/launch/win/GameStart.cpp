#include "launch/win/GameStart.hpp"

#include "launch/SteamEnvironment.hpp"

#include <memory>
#include <vector>

namespace corvandell::win {
namespace {

struct EnvironmentStringsTraits {
    using Handle = wchar_t*;
    static Handle empty() noexcept { return nullptr; }
    static bool isValid(Handle h) noexcept { return h != nullptr; }
    static void close(Handle h) noexcept { FreeEnvironmentStringsW(h); }
};

std::wstring currentEnvironmentBlock() {
    const UniqueHandle<EnvironmentStringsTraits> strings(GetEnvironmentStringsW());
    if (!strings) {
        return {};
    }
    const wchar_t* end = strings.get();
    while (*end != L'\0') {
        end += wcslen(end) + 1;
    }
    return std::wstring(strings.get(), static_cast<size_t>(end - strings.get()) + 1);
}

// A job whose completion port reports its processes, with `limitFlags` as its only limits.
bool makeWatchedJob(DWORD limitFlags, UniqueKernelHandle& job, UniqueKernelHandle& port) {
    job.reset(CreateJobObjectW(nullptr, nullptr));
    if (!job) {
        return false;
    }
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = limitFlags;
    port.reset(CreateIoCompletionPort(INVALID_HANDLE_VALUE, nullptr, 0, 1));
    JOBOBJECT_ASSOCIATE_COMPLETION_PORT association{};
    association.CompletionKey = job.get();
    association.CompletionPort = port.get();
    if (!SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof(limits)) ||
        !port ||
        !SetInformationJobObject(job.get(), JobObjectAssociateCompletionPortInformation, &association,
                                 sizeof(association))) {
        port.reset();
        job.reset();
        return false;
    }
    return true;
}

// Creates the process suspended, so that nothing it starts can escape the job before it
// is in it, then lets it run.
StartedGame startSuspendedInJob(std::wstring commandLine, const std::wstring& workingFolder, DWORD limitFlags,
                                wchar_t* environment) {
    StartedGame game;
    const bool hasJob = makeWatchedJob(limitFlags, game.job, game.port);
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION created{};
    const DWORD flags = CREATE_SUSPENDED | (environment != nullptr ? CREATE_UNICODE_ENVIRONMENT : 0);
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, flags, environment,
                        workingFolder.empty() ? nullptr : workingFolder.c_str(), &startup, &created)) {
        const DWORD error = GetLastError();
        game.port.reset();
        game.job.reset();
        SetLastError(error);
        return game;
    }
    game.process.reset(created.hProcess);
    game.processId = created.dwProcessId;
    const UniqueKernelHandle thread(created.hThread);
    if (hasJob && !AssignProcessToJobObject(game.job.get(), game.process.get())) {
        game.port.reset();
        game.job.reset();
    }
    ResumeThread(thread.get());
    return game;
}

} // namespace

StartedGame startGameDirect(const std::wstring& executable, const std::wstring& workingFolder,
                            const std::wstring& steamAppId) {
    std::wstring environment;
    if (!steamAppId.empty()) {
        environment = steamEnvironmentBlock(splitEnvironmentBlock(currentEnvironmentBlock()), steamAppId);
    }
    return startSuspendedInJob(L"\"" + executable + L"\"", workingFolder, JOB_OBJECT_LIMIT_BREAKAWAY_OK,
                               environment.empty() ? nullptr : environment.data());
}

StartedGame startInJob(const std::wstring& commandLine, const std::wstring& workingFolder) {
    return startSuspendedInJob(commandLine, workingFolder, JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE, nullptr);
}

} // namespace corvandell::win
