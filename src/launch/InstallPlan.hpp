// Where a title is installed and which of its files is started.
//
// One folder per title under the library folder. An update goes into the folder the title
// already has (even if the title was renamed since); a first install takes the folder
// named after the title, unless that folder already holds something that is not this
// title's install, in which case the title's id is added to the name, so two titles whose
// names repair to the same folder never share it and a user's own folder is never filled.
//
// The started file is the first asset whose name ends in ".exe". Its file keeps the ".bin"
// every downloaded file gets: Windows starts a program by its contents, not its suffix, so
// CreateProcessW runs "game.exe.bin", and a build without a program is never mistaken for
// one. A build with no ".exe" asset records no executable (nothing to start directly).
#pragma once

#include "api/ServiceRecords.hpp"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace corvandell {

// Throws std::runtime_error when neither the plain nor the id-suffixed folder can be used.
std::filesystem::path chooseTitleFolder(const std::filesystem::path& libraryPath, const std::string& titleId,
                                        const std::string& title, const std::string& existingInstallPath);

// Index of the asset that becomes the title's executable; none when no name ends in ".exe".
std::optional<std::size_t> executableAssetIndex(const std::vector<DownloadAsset>& assets);

// The outcome of one install job, posted to the window that started it.
struct InstallResult {
    bool succeeded = false;
    std::string titleId;
    std::string name;
    std::string installPath;    // the title's folder (UTF-8)
    std::string executablePath; // "" when the build has no program
    std::string version;        // the build installed; "" when the service named none
    std::string errorText;      // shown as is: "Install failed: " + the reason
};

} // namespace corvandell
