// Downloading every file of a build into the title's folder.
//
// Nothing is installed until everything has arrived: each asset is written under its final
// name plus ".partial", and only when every asset is complete are they renamed into place,
// one after another. A download that fails or is cancelled removes its partial files and
// leaves the folder as it was, so an interrupted update keeps the previous build
// launchable. (A rename can still fail part-way, for example when the running game holds
// its program open; the program it holds is then the old one, and the install is reported
// as failed.)
#pragma once

#include "api/ServiceRecords.hpp"
#include "launch/win/FileDownload.hpp"

#include <filesystem>
#include <string>
#include <vector>

namespace corvandell::win {

struct BuildDownload {
    std::string titleId;
    std::filesystem::path folder; // the title's folder; made with its parents when missing
    std::vector<DownloadAsset> assets;
    int limitKbps = 0;
};

// Checks the asset list before anything is written: none with an address gives
// "No downloadable assets returned by API.", and a name that is not a plain file inside the
// folder is refused. Returns the path of the program to start ("" when the build has none).
std::filesystem::path downloadBuild(const BuildDownload& build, const DownloadProgressSink& progress,
                                    DownloadClock& clock, const DownloadCancel& cancel);

} // namespace corvandell::win
