// Listing the folders of a store library (Xbox libraries, the EA library root, itch's
// apps folder), where every subfolder is one candidate install.
#pragma once

#include <filesystem>
#include <vector>

namespace corvandell {

// The direct subfolders, sorted so scans report games in the same order every time; empty
// when the folder cannot be read. A listing error ends it with what was found so far.
// Links to folders count as folders, since stores allow moving games elsewhere.
std::vector<std::filesystem::path> listSubfolders(const std::filesystem::path& folder);

} // namespace corvandell
