// Background jobs that hand their result back to the UI thread.
//
// Every blocking piece of work runs on a thread started for that one request. The thread
// builds the result on the heap and posts its address to the window that asked; from the
// moment the message is received the window owns the record. If the post fails (the
// window is gone) nobody else ever will, so the thread frees the record itself.
#pragma once

#include <windows.h>

#include <process.h>

#include <exception>
#include <functional>
#include <memory>
#include <utility>

namespace corvandell::win {

template <class Result> struct UiJob {
    HWND target;
    UINT message;
    std::function<Result()> producer; // never throws: failures become text in the Result
};

template <class Result> unsigned __stdcall runUiJob(void* parameter) noexcept {
    std::unique_ptr<UiJob<Result>> job(static_cast<UiJob<Result>*>(parameter));
    std::unique_ptr<Result> result;
    try {
        result = std::make_unique<Result>(job->producer());
    } catch (...) {
        // A producer that breaks its promise leaves nothing to report; dropping the
        // result is better than taking the process down from a worker thread.
        return 0;
    }
    if (PostMessageW(job->target, job->message, 0, reinterpret_cast<LPARAM>(result.get()))) {
        static_cast<void>(result.release());
    }
    return 0;
}

// Starts `producer` on a new thread; its result arrives as `message` with lParam the
// record's address. Being unable to start a thread leaves the client unusable.
template <class Result> void startUiJob(HWND target, UINT message, std::function<Result()> producer) {
    auto job = std::make_unique<UiJob<Result>>(UiJob<Result>{target, message, std::move(producer)});
    const uintptr_t thread = _beginthreadex(nullptr, 0, &runUiJob<Result>, job.get(), 0, nullptr);
    if (thread == 0) {
        std::terminate();
    }
    static_cast<void>(job.release());
    CloseHandle(reinterpret_cast<HANDLE>(thread));
}

// Takes ownership of a posted result; call first thing in the handler.
template <class Result> std::unique_ptr<Result> takeUiJobResult(LPARAM lParam) noexcept {
    return std::unique_ptr<Result>(reinterpret_cast<Result*>(lParam));
}

} // namespace corvandell::win
