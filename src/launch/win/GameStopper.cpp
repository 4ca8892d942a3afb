#include "launch/win/GameStopper.hpp"

#include <process.h>

#include <exception>
#include <memory>

namespace corvandell::win {
namespace {

struct StopRequest {
    UniqueKernelHandle handle; // a job, or a process
    DWORD processId = 0;       // 0: the handle is a job
};

bool belongsToStop(const StopRequest& request, DWORD processId) {
    if (request.processId != 0) {
        return processId == request.processId;
    }
    // Wine answers IsProcessInJob only for the full query right; Windows takes either.
    UniqueKernelHandle process(OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, processId));
    if (!process) {
        process.reset(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId));
    }
    BOOL isInJob = FALSE;
    return process && IsProcessInJob(process.get(), request.handle.get(), &isInJob) && isInJob;
}

BOOL CALLBACK closeIfOurs(HWND window, LPARAM parameter) noexcept {
    const auto& request = *reinterpret_cast<const StopRequest*>(parameter);
    if (!IsWindowVisible(window) || GetWindow(window, GW_OWNER) != nullptr) {
        return TRUE;
    }
    DWORD processId = 0;
    GetWindowThreadProcessId(window, &processId);
    if (processId != 0 && belongsToStop(request, processId)) {
        PostMessageW(window, WM_CLOSE, 0, 0);
    }
    return TRUE;
}

bool isJobEmpty(HANDLE job) {
    JOBOBJECT_BASIC_ACCOUNTING_INFORMATION accounting{};
    if (!QueryInformationJobObject(job, JobObjectBasicAccountingInformation, &accounting, sizeof(accounting),
                                   nullptr)) {
        return true; // nothing more can be learnt: stop waiting
    }
    return accounting.ActiveProcesses == 0;
}

unsigned __stdcall runStopper(void* parameter) noexcept {
    const std::unique_ptr<StopRequest> request(static_cast<StopRequest*>(parameter));
    EnumWindows(&closeIfOurs, reinterpret_cast<LPARAM>(request.get()));
    if (request->processId == 0) {
        for (int check = 0; check < kJobStopChecks && !isJobEmpty(request->handle.get()); ++check) {
            Sleep(kJobStopPauseMs);
        }
        TerminateJobObject(request->handle.get(), 0);
        return 0;
    }
    if (WaitForSingleObject(request->handle.get(), kProcessStopWaitMs) == WAIT_TIMEOUT) {
        TerminateProcess(request->handle.get(), 0);
    }
    return 0;
}

void startStopper(std::unique_ptr<StopRequest> request) {
    const uintptr_t thread = _beginthreadex(nullptr, 0, &runStopper, request.get(), 0, nullptr);
    if (thread == 0) {
        std::terminate();
    }
    static_cast<void>(request.release());
    CloseHandle(reinterpret_cast<HANDLE>(thread));
}

} // namespace

void stopJobLater(UniqueKernelHandle job) {
    startStopper(std::make_unique<StopRequest>(StopRequest{std::move(job), 0}));
}

void stopProcessLater(UniqueKernelHandle process, DWORD processId) {
    startStopper(std::make_unique<StopRequest>(StopRequest{std::move(process), processId}));
}

} // namespace corvandell::win
