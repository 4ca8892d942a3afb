// The watcher thread does nothing but wait and post. It opens every folder and key itself:
// a registry notification lives only as long as the thread that asked for it, so the
// thread that waits must also be the one that arms.
#include <windows.h>

#include "stores/win/StoreWatcher.hpp"

#include "stores/win/WindowsRegistry.hpp"

#include <process.h>

#include <memory>
#include <optional>
#include <utility>

namespace corvandell::win {

namespace {

constexpr DWORD kFolderChanges =
    FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_DIR_NAME | FILE_NOTIFY_CHANGE_LAST_WRITE;
constexpr DWORD kKeyChanges = REG_NOTIFY_CHANGE_NAME | REG_NOTIFY_CHANGE_LAST_SET;

// The stop event takes the first of the slots one wait can hold.
constexpr size_t kMaxWatches = MAXIMUM_WAIT_OBJECTS - 1;

bool armKeyNotification(HKEY key, HANDLE changed) {
    return RegNotifyChangeKeyValue(key, TRUE, kKeyChanges, changed, TRUE) == ERROR_SUCCESS;
}

// One thing the thread waits on: a folder's change notification, or a key together with
// the event its notification signals.
class Watch {
public:
    static std::optional<Watch> forFolder(const WatchedFolder& folder) {
        Watch watch;
        watch.folderChange_.reset(FindFirstChangeNotificationW(
            folder.path.c_str(), folder.watchSubtree ? TRUE : FALSE, kFolderChanges));
        return watch.folderChange_ ? std::optional<Watch>(std::move(watch)) : std::nullopt;
    }

    static std::optional<Watch> forKey(const WatchedRegistryKey& key) {
        Watch watch;
        watch.key_ = openRegistryKey(key.hive, key.keyPath, KEY_NOTIFY);
        // Auto-reset: the wait that reports the change also clears it for the next one.
        watch.keyChanged_.reset(CreateEventW(nullptr, FALSE, FALSE, nullptr));
        if (!watch.key_ || !watch.keyChanged_ ||
            !armKeyNotification(watch.key_.get(), watch.keyChanged_.get())) {
            return std::nullopt;
        }
        return watch;
    }

    HANDLE waitable() const { return key_ ? keyChanged_.get() : folderChange_.get(); }

    // Asks for the next change; false when the folder or key can no longer be watched.
    bool rearm() {
        return key_ ? armKeyNotification(key_.get(), keyChanged_.get())
                    : FindNextChangeNotification(folderChange_.get()) != FALSE;
    }

private:
    Watch() = default;

    UniqueChangeNotification folderChange_;
    UniqueKernelHandle keyChanged_;
    UniqueRegistryKey key_; // declared last so it closes first, while its event still exists
};

enum class Wake { Stop, Change, Quiet };

// The stop event followed by one handle per watch, kept in step with the watches.
class WaitList {
public:
    WaitList(HANDLE stopEvent, std::vector<Watch> watches) : watches_(std::move(watches)) {
        handles_.push_back(stopEvent);
        for (const auto& watch : watches_) {
            handles_.push_back(watch.waitable());
        }
    }

    bool isEmpty() const { return watches_.empty(); }

    // A watch that fires is re-armed at once; one that cannot be re-armed (its folder was
    // deleted) is dropped, since its handle would otherwise stay signalled and spin.
    Wake wait(DWORD timeoutMs) {
        const DWORD result =
            WaitForMultipleObjects(static_cast<DWORD>(handles_.size()), handles_.data(), FALSE, timeoutMs);
        if (result == WAIT_TIMEOUT) {
            return Wake::Quiet;
        }
        // The stop event, a failed wait and anything unexpected all end the thread.
        if (result <= WAIT_OBJECT_0 || result >= WAIT_OBJECT_0 + handles_.size()) {
            return Wake::Stop;
        }
        const size_t index = result - WAIT_OBJECT_0 - 1;
        if (!watches_[index].rearm()) {
            watches_.erase(watches_.begin() + static_cast<std::ptrdiff_t>(index));
            handles_.erase(handles_.begin() + static_cast<std::ptrdiff_t>(index) + 1);
        }
        return Wake::Change;
    }

private:
    std::vector<Watch> watches_;
    std::vector<HANDLE> handles_;
};

struct WatchJob {
    HWND window;
    UINT message;
    HANDLE stopEvent; // owned by the StoreWatcher, which outlives the thread
    std::vector<WatchedFolder> folders;
    std::vector<WatchedRegistryKey> keys;
};

// Folders first, then keys; whatever does not fit into one wait is dropped.
std::vector<Watch> openWatches(const WatchJob& job) {
    std::vector<Watch> watches;
    for (const auto& folder : job.folders) {
        if (watches.size() == kMaxWatches) {
            return watches;
        }
        if (auto watch = Watch::forFolder(folder)) {
            watches.push_back(std::move(*watch));
        }
    }
    for (const auto& key : job.keys) {
        if (watches.size() == kMaxWatches) {
            return watches;
        }
        if (auto watch = Watch::forKey(key)) {
            watches.push_back(std::move(*watch));
        }
    }
    return watches;
}

unsigned __stdcall watchStores(void* parameter) noexcept {
    const std::unique_ptr<WatchJob> job(static_cast<WatchJob*>(parameter));
    try {
        WaitList waitList(job->stopEvent, openWatches(*job));
        while (!waitList.isEmpty()) {
            if (waitList.wait(INFINITE) == Wake::Stop) {
                return 0;
            }
            Wake wake = Wake::Change;
            while (wake == Wake::Change) {
                wake = waitList.wait(kStoreQuietMs);
            }
            if (wake == Wake::Stop) {
                return 0;
            }
            PostMessageW(job->window, job->message, 0, 0);
        }
    } catch (...) {
        // Only memory can run out here; the library still refreshes by hand without us.
    }
    return 0;
}

} // namespace

void StoreWatcher::start(HWND window, UINT message, std::vector<WatchedFolder> folders,
                         std::vector<WatchedRegistryKey> keys) {
    stop();
    if (folders.empty() && keys.empty()) {
        return;
    }
    UniqueKernelHandle stopEvent(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    if (!stopEvent) {
        return;
    }
    auto job = std::make_unique<WatchJob>(
        WatchJob{window, message, stopEvent.get(), std::move(folders), std::move(keys)});
    const uintptr_t thread = _beginthreadex(nullptr, 0, &watchStores, job.get(), 0, nullptr);
    if (thread == 0) {
        return; // no watching, but the client works on
    }
    static_cast<void>(job.release());
    thread_.reset(reinterpret_cast<HANDLE>(thread));
    stopEvent_ = std::move(stopEvent);
}

void StoreWatcher::stop() {
    if (thread_) {
        SetEvent(stopEvent_.get());
        WaitForSingleObject(thread_.get(), INFINITE);
    }
    thread_.reset();
    stopEvent_.reset();
}

} // namespace corvandell::win
