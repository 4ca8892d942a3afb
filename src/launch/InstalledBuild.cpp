#include "launch/InstalledBuild.hpp"

#include "api/JsonText.hpp"
#include "base/BoundedFileRead.hpp"
#include "base/FileCommit.hpp"

namespace corvandell {
namespace {

constexpr std::size_t kMaxRecordBytes = 64 * 1024;

} // namespace

std::string formatInstalledBuild(const InstalledBuild& build) {
    return "{\"titleId\":\"" + escapeBodyString(build.titleId) + "\",\"version\":\"" +
           escapeBodyString(build.version) + "\"}\n";
}

InstalledBuild parseInstalledBuild(const std::string& text) {
    return {readString(text, "titleId"), readString(text, "version")};
}

InstalledBuild readInstalledBuild(const std::filesystem::path& folder) {
    const FileRead read = readFileBounded(folder / kInstalledBuildFileName, kMaxRecordBytes);
    if (read.status != FileReadStatus::Ok) {
        return {};
    }
    return parseInstalledBuild(read.bytes);
}

void writeInstalledBuild(const std::filesystem::path& folder, const InstalledBuild& build) {
    replaceFileAtomically(folder / kInstalledBuildFileName, formatInstalledBuild(build));
}

std::string installedVersionIn(const std::filesystem::path& folder, const std::string& titleId) {
    InstalledBuild build = readInstalledBuild(folder);
    return build.titleId == titleId ? std::move(build.version) : std::string();
}

} // namespace corvandell
