#include "launch/win/InstallJob.hpp"

#include "base/Utf8Path.hpp"
#include "launch/InstalledBuild.hpp"

#include <exception>
#include <stdexcept>

namespace corvandell::win {
namespace {

// A title without builds, or a service that cannot say, leaves the version unknown; the
// install itself still goes ahead if the service grants the files.
std::string currentVersion(IApiClient& api, const std::string& titleId) {
    try {
        return api.latestBuild(titleId).version;
    } catch (const std::exception&) {
        return {};
    }
}

} // namespace

InstallResult runInstall(IApiClient& api, const InstallRequest& request, const DownloadProgressSink& progress,
                         DownloadClock& clock, const DownloadCancel& cancel) noexcept {
    InstallResult result;
    try {
        result.titleId = request.titleId;
        result.name = request.name;
        result.version = currentVersion(api, request.titleId);
        std::vector<DownloadAsset> assets = api.requestDownload(request.titleId);
        cancel.throwIfCancelled();
        // An empty grant is refused before a folder is chosen or made.
        BuildDownload build{request.titleId, {}, std::move(assets), request.limitKbps};
        if (build.assets.empty()) {
            throw std::runtime_error("No downloadable assets returned by API.");
        }
        build.folder = chooseTitleFolder(request.libraryPath, request.titleId, request.name,
                                         request.existingInstallPath);
        const std::filesystem::path program = downloadBuild(build, progress, clock, cancel);
        writeInstalledBuild(build.folder, {request.titleId, result.version});
        result.installPath = pathToUtf8(build.folder);
        result.executablePath = program.empty() ? std::string() : pathToUtf8(program);
        result.succeeded = true;
        progress(DownloadProgress{request.titleId, 0, 0, 100, L"Installed"});
    } catch (const std::exception& error) {
        result.succeeded = false;
        result.errorText = std::string("Install failed: ") + error.what();
    } catch (...) {
        result.succeeded = false;
        result.errorText = "Install failed: unexpected error";
    }
    return result;
}

} // namespace corvandell::win
