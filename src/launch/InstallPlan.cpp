#include "launch/InstallPlan.hpp"

#include "base/AsciiText.hpp"
#include "base/Utf8Path.hpp"
#include "launch/InstallNames.hpp"
#include "launch/InstalledBuild.hpp"

#include <stdexcept>
#include <system_error>

namespace corvandell {
namespace {

bool isUsableFor(const std::filesystem::path& folder, const std::string& titleId) {
    std::error_code error;
    const auto status = std::filesystem::symlink_status(folder, error);
    if (status.type() == std::filesystem::file_type::not_found) {
        return true;
    }
    if (error || status.type() != std::filesystem::file_type::directory) {
        return false; // a file, a link or something unreadable in the way
    }
    if (std::filesystem::is_empty(folder, error) && !error) {
        return true;
    }
    return readInstalledBuild(folder).titleId == titleId;
}

// The first characters of the id that are safe anywhere, for telling titles apart.
std::string idTag(const std::string& titleId) {
    std::string tag;
    for (const char c : titleId) {
        if ((c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z')) {
            tag.push_back(c);
        }
        if (tag.size() == 8) {
            break;
        }
    }
    return tag;
}

} // namespace

std::filesystem::path chooseTitleFolder(const std::filesystem::path& libraryPath, const std::string& titleId,
                                        const std::string& title, const std::string& existingInstallPath) {
    if (!existingInstallPath.empty()) {
        return pathFromUtf8(existingInstallPath);
    }
    const std::string name = titleFolderName(title, titleId);
    const std::filesystem::path plain = libraryPath / pathFromUtf8(name);
    if (isUsableFor(plain, titleId)) {
        return plain;
    }
    const std::string tag = idTag(titleId);
    if (!tag.empty()) {
        const std::filesystem::path tagged = libraryPath / pathFromUtf8(name + " (" + tag + ")");
        if (isUsableFor(tagged, titleId)) {
            return tagged;
        }
    }
    throw std::runtime_error("The folder \"" + pathToUtf8(plain) + "\" already holds other files.");
}

std::optional<std::size_t> executableAssetIndex(const std::vector<DownloadAsset>& assets) {
    for (std::size_t i = 0; i < assets.size(); ++i) {
        if (endsWithIgnoringAsciiCase(assets[i].assetId, ".exe")) {
            return i;
        }
    }
    return std::nullopt;
}

} // namespace corvandell
