// Writing one tree of a decoded pack to disk as plain files.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "webgames/Packfile.hpp"

namespace corvandell::git {

// Throws std::runtime_error: "missing tree object in pack", "missing blob object in pack",
// "cannot write " + path, "tree nesting too deep", "too many files in the repository".
// Unsafe entry names are skipped, not written.
void checkout_tree(const ObjectSet& objects, const std::string& treeName,
                   const std::filesystem::path& folder);

// Creates missing parent folders and writes the bytes; throws "cannot write " + path.
void write_file(const std::filesystem::path& path, std::string_view bytes);

} // namespace corvandell::git
