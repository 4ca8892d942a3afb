// Which build of a title is installed in its folder.
//
// library.json has a fixed layout with no version in it, so the installer leaves a small
// record beside the files it installed: "corvandell-build.json", naming the title and the
// build's version. The refresh reads it back to tell an up-to-date install (Launch) from
// an old one (Update). It is written last, after every file of the build is in place, so
// a record never names a build whose files are not all there; a folder without a record,
// or with another title's, counts as "version unknown", which offers Update, never a false
// Launch.
#pragma once

#include <filesystem>
#include <string>

namespace corvandell {

inline constexpr char kInstalledBuildFileName[] = "corvandell-build.json";

struct InstalledBuild {
    std::string titleId;
    std::string version;
    friend bool operator==(const InstalledBuild&, const InstalledBuild&) = default;
};

std::string formatInstalledBuild(const InstalledBuild& build);
// Missing fields read as empty.
InstalledBuild parseInstalledBuild(const std::string& text);

// The record in `folder`; empty fields when there is none or it cannot be read.
InstalledBuild readInstalledBuild(const std::filesystem::path& folder);
// Replaces the record crash-safely; throws std::runtime_error when it cannot be written.
void writeInstalledBuild(const std::filesystem::path& folder, const InstalledBuild& build);

// The installed version of `titleId` in `folder`: "" unless the folder's record names it.
std::string installedVersionIn(const std::filesystem::path& folder, const std::string& titleId);

} // namespace corvandell
