// Where a browser game keeps its files under the data folder: its clone, and the private
// browser profile it is played in, so its site data never mixes with the user's browsing.
#pragma once

#include "webgames/RepositoryAddress.hpp"

#include <filesystem>
#include <string_view>

namespace corvandell {

// data folder / "github" / owner + "-" + repo.
std::filesystem::path webGameCloneFolder(const std::filesystem::path& dataFolder,
                                         const RepositoryAddress& address);

// data folder / "webgames" / the game key with anything but letters, digits, "-", "." and
// "_" made "_", so a key never names another folder.
std::filesystem::path webGameProfileFolder(const std::filesystem::path& dataFolder, std::string_view gameKey);

} // namespace corvandell
