// Writes one tree of a decoded pack into a folder as plain files.
//
// The walk keeps its own stack of open trees instead of recursing, so a hostile tree
// nested ten thousand deep (or one that names itself) ends in a clear error rather than a
// stack overflow on a worker thread's small stack. Entry names pass through
// is_safe_entry_name first, so nothing is ever written outside the folder; symbolic links
// and submodules are skipped because the folder only serves plain files to a browser.
#include "webgames/git/Checkout.hpp"

#include "base/Utf8Path.hpp"
#include "webgames/git/GitTree.hpp"

#include <algorithm>
#include <fstream>
#include <map>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace corvandell::git {

namespace {

constexpr std::size_t kMaxTreeDepth = 10000;
// A tree may name the same subtree many times over, so a small pack can describe billions
// of entries; a browser game never comes near this many.
constexpr std::size_t kMaxEntries = 1000000;
constexpr std::uint32_t kTypeMask = 0xF000;
constexpr std::uint32_t kDirectoryType = 0x4000;
constexpr std::uint32_t kRegularFileType = 0x8000;

using NativeText = std::filesystem::path::string_type;

struct OpenTree {
    std::vector<TreeEntry> entries;
    std::size_t next = 0;
    std::size_t folderLength = 0; // of the shared folder text while this tree is open
};

const GitObject& find_object(const ObjectSet& objects, const std::string& name, const char* missingText) {
    const auto found = objects.find(name);
    if (found == objects.end()) {
        throw std::runtime_error(missingText);
    }
    return found->second;
}

OpenTree open_tree(const ObjectSet& objects, const std::string& treeName, std::size_t folderLength) {
    const GitObject& tree = find_object(objects, treeName, "missing tree object in pack");
    return OpenTree{read_tree(tree.data), 0, folderLength};
}

void append_component(NativeText& folder, std::string_view name) {
    if (!folder.empty() && folder.back() != std::filesystem::path::preferred_separator) {
        folder.push_back(std::filesystem::path::preferred_separator);
    }
    folder.append(pathFromUtf8(name).native());
}

// How many entries the walk would visit, counting a subtree once for every time it is
// named, saturating just above kMaxEntries. Each distinct tree is read once. Missing trees
// and cycles count nothing here: the walk reports them with their own texts.
std::size_t expanded_entries(const ObjectSet& objects, const std::string& rootName) {
    constexpr std::size_t kInProgress = static_cast<std::size_t>(-1);
    std::map<std::string, std::size_t> counts;
    std::vector<std::pair<std::string, std::vector<TreeEntry>>> pending;
    const auto enter = [&](const std::string& name) {
        const auto found = objects.find(name);
        counts[name] = kInProgress;
        pending.emplace_back(name, found == objects.end() ? std::vector<TreeEntry>{}
                                                          : read_tree(found->second.data));
    };
    enter(rootName);
    while (!pending.empty()) {
        auto& [name, entries] = pending.back();
        const auto unvisited = std::find_if(entries.begin(), entries.end(), [&](const TreeEntry& entry) {
            return (entry.mode & kTypeMask) == kDirectoryType && !counts.contains(entry.id);
        });
        if (unvisited != entries.end()) {
            enter(unvisited->id); // invalidates `name` and `entries`
            continue;
        }
        std::size_t total = entries.size();
        for (const TreeEntry& entry : entries) {
            const auto child = counts.find(entry.id);
            if ((entry.mode & kTypeMask) == kDirectoryType && child->second != kInProgress) {
                total = std::min(total + child->second, kMaxEntries + 1);
            }
        }
        counts[name] = total;
        pending.pop_back();
    }
    return counts[rootName];
}

} // namespace

void ensure_tree_fits(const ObjectSet& objects, const std::string& treeName) {
    if (expanded_entries(objects, treeName) > kMaxEntries) {
        throw std::runtime_error("too many files in the repository");
    }
}

// One folder text grows and shrinks with the walk, so a deep tree costs memory in
// proportion to its depth rather than to the square of it.
void checkout_tree(const ObjectSet& objects, const std::string& treeName,
                   const std::filesystem::path& folder) {
    NativeText current = folder.native();
    std::vector<OpenTree> stack;
    stack.push_back(open_tree(objects, treeName, current.size()));
    while (!stack.empty()) {
        OpenTree& tree = stack.back();
        current.resize(tree.folderLength);
        if (tree.next == tree.entries.size()) {
            stack.pop_back();
            continue;
        }
        const TreeEntry& entry = tree.entries[tree.next++];
        if (!is_safe_entry_name(entry.name)) {
            continue;
        }
        const std::uint32_t type = entry.mode & kTypeMask;
        if (type == kDirectoryType) {
            if (stack.size() > kMaxTreeDepth) {
                throw std::runtime_error("tree nesting too deep");
            }
            append_component(current, entry.name);
            OpenTree child = open_tree(objects, entry.id, current.size());
            stack.push_back(std::move(child)); // `tree` and `entry` dangle from here on
        } else if (type == kRegularFileType) {
            const GitObject& blob = find_object(objects, entry.id, "missing blob object in pack");
            write_file(std::filesystem::path(current) / pathFromUtf8(entry.name), blob.data);
        }
    }
}

void write_file(const std::filesystem::path& path, std::string_view bytes) {
    const std::filesystem::path file = path.has_filename() ? path : path.parent_path();
    std::error_code ignored;
    std::filesystem::create_directories(file.parent_path(), ignored);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (out.is_open()) {
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        out.close();
    }
    if (!out) {
        throw std::runtime_error("cannot write " + pathToUtf8(path));
    }
}

} // namespace corvandell::git
