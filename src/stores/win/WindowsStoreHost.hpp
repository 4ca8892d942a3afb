// The machine itself as the store scanners see it: the real registry, the process
// environment read as UTF-16, and the roots of the local drives.
#pragma once

#include "base/win/WindowsEnvironment.hpp"
#include "stores/StoreHost.hpp"
#include "stores/win/WindowsRegistry.hpp"

#include <filesystem>
#include <vector>

namespace corvandell::win {

// The roots of the fixed and removable drives, e.g. C:\ and D:\. Network and optical
// drives are left out: a store cannot install onto them, and asking a sleeping network
// share for a file can stall a scan for seconds.
std::vector<std::filesystem::path> localDriveRoots();

// Owns what the StoreHost refers to, so it stays put: neither copied nor moved.
class WindowsStoreHost {
public:
    WindowsStoreHost() : host_{registry_, environment_, localDriveRoots()} {}
    WindowsStoreHost(const WindowsStoreHost&) = delete;
    WindowsStoreHost& operator=(const WindowsStoreHost&) = delete;

    const StoreHost& host() const { return host_; }

private:
    WindowsRegistry registry_;
    WindowsEnvironment environment_;
    StoreHost host_;
};

} // namespace corvandell::win
