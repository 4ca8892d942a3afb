// Reading commit and tree objects.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace corvandell::git {

struct TreeEntry {
    std::uint32_t mode = 0;
    std::string name; // UTF-8 bytes as stored
    std::string id;   // 40 lower-case hexadecimal digits
};

// The root tree's name, or "" when the commit text does not start with a tree line.
std::string root_tree_of(std::string_view commitText);

// A truncated tree yields the entries read so far.
std::vector<TreeEntry> read_tree(std::string_view treeData);

// False for names a hostile repository could use to escape or misuse the destination
// folder on Windows: empty, ".", "..", ".git" in any case, separators, ":", NUL, device
// names with or without extension, trailing dot or space.
bool is_safe_entry_name(std::string_view name);

} // namespace corvandell::git
