// The install job of one service title, run on its own thread: ask the service which build
// is current and for its files, download them into the title's folder, and mark the folder
// with the build installed. The window applies the result (library cache, refresh).
#pragma once

#include "api/IApiClient.hpp"
#include "launch/InstallPlan.hpp"
#include "launch/win/BuildDownloader.hpp"

#include <filesystem>
#include <string>

namespace corvandell::win {

struct InstallRequest {
    std::string titleId;
    std::string name;
    std::filesystem::path libraryPath;
    int limitKbps = 0;
    std::string existingInstallPath; // the title's folder from library.json; "" on a first install
};

// Never throws: a failure comes back with errorText "Install failed: " + the reason.
//
// The version is asked before the download is granted: should a build be published in
// between, the record names the older one and the row offers an update it does not need,
// never the reverse.
InstallResult runInstall(IApiClient& api, const InstallRequest& request, const DownloadProgressSink& progress,
                         DownloadClock& clock, const DownloadCancel& cancel) noexcept;

} // namespace corvandell::win
