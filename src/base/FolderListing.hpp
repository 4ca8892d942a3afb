// One folder's entries as the platform lists them, read in one pass with no per-entry
// allocation and without following links.
//
// Folder walks over a Steam library meet hundreds of thousands of entries; building a
// std::filesystem::path for each (and splitting it into components) cost as much as the
// system calls themselves. The listing keeps every name in one buffer and tells folders,
// files and links apart from what the directory read already returns (d_type on POSIX,
// the find data's attributes on Windows), so a walk pays a stat only where the platform
// leaves the kind unknown.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>
#include <vector>

namespace corvandell {

using NativeText = std::filesystem::path::string_type;
using NativeView = std::basic_string_view<std::filesystem::path::value_type>;

enum class ListedKind : std::uint8_t {
    File,       // a regular file, or a link to one
    Folder,     // a real folder
    FolderLink, // a symbolic link, junction or other reparse point that leads to a folder
    Other,      // devices, sockets, dangling links: nothing a walk wants
};

struct ListedEntry {
    std::uint32_t nameOffset = 0;
    std::uint32_t nameLength = 0;
    ListedKind kind = ListedKind::Other;
};

class FolderListing {
public:
    // Replaces the listing with the entries of `folder` (native text, no trailing
    // separator needed), leaving out "." and "..". False when the folder cannot be read;
    // the listing is then empty.
    bool read(const NativeText& folder);

    const std::vector<ListedEntry>& entries() const { return entries_; }
    NativeView nameOf(const ListedEntry& entry) const {
        return NativeView(names_).substr(entry.nameOffset, entry.nameLength);
    }

private:
    void add(NativeView name, ListedKind kind) {
        entries_.push_back(
            {static_cast<std::uint32_t>(names_.size()), static_cast<std::uint32_t>(name.size()), kind});
        names_.append(name);
    }

    NativeText names_;
    std::vector<ListedEntry> entries_;
};

} // namespace corvandell
