// Tells a window, after a quiet spell, that a game store changed something on disk or in
// the registry, so the library can refresh once per burst rather than once per file.
//
// One thread waits on a stop event, one change notification per watched folder and one
// registry notification per watched key. A change starts the debounce: the thread keeps
// waiting until kStoreQuietMs pass without another change, then posts the message with no
// parameters. Only the window's thread calls start and stop.
#pragma once

#include <windows.h>

#include "base/win/UniqueHandle.hpp"
#include "stores/WatchList.hpp"

#include <vector>

namespace corvandell::win {

inline constexpr DWORD kStoreQuietMs = 3000;

class StoreWatcher {
public:
    StoreWatcher() = default;
    StoreWatcher(const StoreWatcher&) = delete;
    StoreWatcher& operator=(const StoreWatcher&) = delete;
    ~StoreWatcher() { stop(); }

    // Stops a running watcher first. Folders and keys that cannot be watched (missing,
    // unreadable) are left out silently; with nothing left to watch the thread ends at once.
    void start(HWND window, UINT message, std::vector<WatchedFolder> folders,
               std::vector<WatchedRegistryKey> keys = {});

    // Returns once the thread has ended; a message already posted may still arrive.
    void stop();

private:
    UniqueKernelHandle stopEvent_;
    UniqueKernelHandle thread_;
};

} // namespace corvandell::win
