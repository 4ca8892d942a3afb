// Background jobs that hand their result back to the UI thread.
//
// Every blocking piece of work runs on a thread started for that one request. The thread
// builds the result on the heap and posts its address to the window that asked; from the
// moment the message is received the window owns the record. If the post fails (the
// window is gone) nobody else ever will, so the thread frees the record itself.
//
// The window keeps the threads of its jobs in a UiJobThreads and waits for them before it
// is destroyed: a producer may use what the window owns (its settings, its service client),
// so no job may outlive it. Producers therefore never send (as opposed to post) a message to
// the window, which would wait for the UI thread that is waiting for them.
#pragma once

#include <windows.h>

#include <process.h>

#include "base/win/UniqueHandle.hpp"

#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace corvandell::win {

// A result record that can say its job failed: its errorText is shown to the user, and a
// `succeeded` flag, where there is one, is false.
template <class Result>
concept UiJobResult = std::is_default_constructible_v<Result> && requires(Result result) {
    result.errorText = std::string();
};

template <class Result> Result failedUiJobResult(std::string errorText) {
    Result result{};
    if constexpr (requires { result.succeeded = false; }) {
        result.succeeded = false;
    }
    result.errorText = std::move(errorText);
    return result;
}

template <class Result> struct UiJob {
    HWND target;
    UINT message;
    std::function<Result()> producer; // should not throw; if it does, failurePrefix + what()
    std::string failurePrefix;        // the window's own, e.g. "Refresh failed: "
};

// A producer that breaks its promise not to throw is still reported, so the window is not
// left showing "Loading..." forever. Nothing at all is posted only when even the failure
// record cannot be allocated.
template <UiJobResult Result> std::unique_ptr<Result> produceUiJobResult(UiJob<Result>& job) noexcept {
    try {
        try {
            return std::make_unique<Result>(job.producer());
        } catch (const std::exception& error) {
            return std::make_unique<Result>(failedUiJobResult<Result>(job.failurePrefix + error.what()));
        } catch (...) {
            return std::make_unique<Result>(
                failedUiJobResult<Result>(job.failurePrefix + "unexpected error"));
        }
    } catch (...) {
        return nullptr;
    }
}

template <UiJobResult Result> unsigned __stdcall runUiJob(void* parameter) noexcept {
    std::unique_ptr<UiJob<Result>> job(static_cast<UiJob<Result>*>(parameter));
    std::unique_ptr<Result> result = produceUiJobResult(*job);
    if (result && PostMessageW(job->target, job->message, 0, reinterpret_cast<LPARAM>(result.get()))) {
        static_cast<void>(result.release());
    }
    return 0;
}

// The running jobs of one window.
class UiJobThreads {
public:
    UiJobThreads() = default;
    UiJobThreads(const UiJobThreads&) = delete;
    UiJobThreads& operator=(const UiJobThreads&) = delete;
    ~UiJobThreads() { waitForAll(); }

    // Starts `producer` on a new thread; its result arrives as `message` with lParam the
    // record's address. Being unable to start a thread leaves the client unusable.
    template <UiJobResult Result>
    void start(HWND target, UINT message, std::function<Result()> producer, std::string failurePrefix = {}) {
        auto job = std::make_unique<UiJob<Result>>(
            UiJob<Result>{target, message, std::move(producer), std::move(failurePrefix)});
        forgetFinished();
        threads_.reserve(threads_.size() + 1); // so keeping the handle below cannot throw
        const uintptr_t thread = _beginthreadex(nullptr, 0, &runUiJob<Result>, job.get(), 0, nullptr);
        if (thread == 0) {
            std::terminate();
        }
        static_cast<void>(job.release());
        threads_.emplace_back(reinterpret_cast<HANDLE>(thread));
    }

    // Blocks until every job started so far has posted its result (or freed it) and ended.
    void waitForAll() noexcept {
        for (const UniqueKernelHandle& thread : threads_) {
            WaitForSingleObject(thread.get(), INFINITE);
        }
        threads_.clear();
    }

private:
    void forgetFinished() noexcept {
        std::erase_if(threads_, [](const UniqueKernelHandle& thread) {
            return WaitForSingleObject(thread.get(), 0) != WAIT_TIMEOUT;
        });
    }

    std::vector<UniqueKernelHandle> threads_;
};

// Takes ownership of a posted result; call first thing in the handler.
template <class Result> std::unique_ptr<Result> takeUiJobResult(LPARAM lParam) noexcept {
    return std::unique_ptr<Result>(reinterpret_cast<Result*>(lParam));
}

} // namespace corvandell::win
