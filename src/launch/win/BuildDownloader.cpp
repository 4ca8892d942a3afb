#include "launch/win/BuildDownloader.hpp"

#include "base/AsciiText.hpp"
#include "base/FileCommit.hpp"
#include "base/Utf8Path.hpp"
#include "launch/InstallNames.hpp"
#include "launch/InstallPlan.hpp"

#include <set>
#include <stdexcept>
#include <system_error>

namespace corvandell::win {
namespace {

struct PlannedFile {
    const DownloadAsset* asset;
    std::filesystem::path target;
    std::filesystem::path partial;
};

std::vector<PlannedFile> planFiles(const BuildDownload& build) {
    bool hasAddress = false;
    for (const DownloadAsset& asset : build.assets) {
        hasAddress = hasAddress || !asset.signedUrl.empty();
    }
    if (!hasAddress) {
        throw std::runtime_error("No downloadable assets returned by API.");
    }
    std::vector<PlannedFile> files;
    std::set<std::string> seen; // Windows names ignore case, so "A" and "a" are one file
    for (const DownloadAsset& asset : build.assets) {
        if (asset.signedUrl.empty()) {
            throw std::runtime_error("The service gave no address for \"" + asset.assetId + "\".");
        }
        const std::optional<std::string> name = assetFileName(asset.assetId);
        if (!name) {
            throw std::runtime_error("The service gave an unsafe file name: \"" + asset.assetId + "\".");
        }
        if (!seen.insert(lowerAscii(*name)).second) {
            throw std::runtime_error("The service named the file \"" + asset.assetId + "\" twice.");
        }
        // Written with the platform's separator, as the path is stored and shown.
        const std::filesystem::path target = build.folder / pathFromUtf8(*name).make_preferred();
        files.push_back({&asset, target, std::filesystem::path(target).concat(L".partial")});
    }
    return files;
}

void removePartials(const std::vector<PlannedFile>& files) noexcept {
    for (const PlannedFile& file : files) {
        std::error_code ignored;
        std::filesystem::remove(file.partial, ignored);
    }
}

} // namespace

std::filesystem::path downloadBuild(const BuildDownload& build, const DownloadProgressSink& progress,
                                    DownloadClock& clock, const DownloadCancel& cancel) {
    const std::vector<PlannedFile> files = planFiles(build);
    try {
        for (const PlannedFile& file : files) {
            std::filesystem::create_directories(file.target.parent_path());
            downloadFile(
                {file.asset->signedUrl, file.asset->assetId, file.partial, build.limitKbps, build.titleId},
                progress, clock, cancel);
        }
        for (const PlannedFile& file : files) {
            if (!commitTemporaryFile(file.partial, file.target)) {
                throw std::runtime_error("Could not replace \"" + pathToUtf8(file.target) +
                                         "\"; is the game still running?");
            }
        }
    } catch (const std::filesystem::filesystem_error& error) {
        removePartials(files);
        throw std::runtime_error("Could not create the folder \"" + pathToUtf8(error.path1()) + "\".");
    } catch (...) {
        removePartials(files);
        throw;
    }
    const std::optional<std::size_t> program = executableAssetIndex(build.assets);
    return program ? files[*program].target : std::filesystem::path();
}

} // namespace corvandell::win
