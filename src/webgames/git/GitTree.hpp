// Reading commit and tree objects.
#pragma once

#include <cstddef>
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

// One entry where it sits in the tree's bytes, valid while they are.
struct TreeEntryView {
    std::uint32_t mode = 0;
    std::string_view name;  // UTF-8 bytes as stored
    std::string_view rawId; // the object name's 20 raw bytes
};

// Reads a tree's entries in place, one at a time, so a walk over a tree with many entries
// copies none of them.
class TreeEntryReader {
public:
    explicit TreeEntryReader(std::string_view treeData) : data_(treeData) {}

    // False at the end, and at an entry cut short, which ends the tree.
    bool next(TreeEntryView& entry);

private:
    std::string_view data_;
    std::size_t position_ = 0;
};

// A truncated tree yields the entries read so far.
std::vector<TreeEntry> read_tree(std::string_view treeData);

// False for names a hostile repository could use to escape or misuse the destination
// folder, or that Windows cannot create: empty, ".", "..", ".git" in any case, separators,
// NUL, control characters, any of < > : " | ? *, bytes that are not UTF-8, device names
// with or without extension, trailing dot or space.
bool is_safe_entry_name(std::string_view name);

} // namespace corvandell::git
