// Writing one tree of a decoded pack to disk as plain files.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "webgames/git/Packfile.hpp"

namespace corvandell::git {

// A tree may name one subtree many times over, so a small pack can describe billions of
// files. Throws std::runtime_error("too many files in the repository") when the tree
// expands to more than a browser game ever holds; call it before anything irreversible.
void ensure_tree_fits(const ObjectSet& objects, const std::string& treeName);

// Throws std::runtime_error: "missing tree object in pack", "missing blob object in pack",
// "cannot write " + path, "tree nesting too deep". Unsafe entry names are skipped, not
// written. Writes whatever the tree expands to: check it with ensure_tree_fits first.
void checkout_tree(const ObjectSet& objects, const std::string& treeName,
                   const std::filesystem::path& folder);

// Creates missing parent folders and writes the bytes; throws "cannot write " + path.
void write_file(const std::filesystem::path& path, std::string_view bytes);

} // namespace corvandell::git
