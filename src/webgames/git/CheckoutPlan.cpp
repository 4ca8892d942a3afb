// The checkout's one walk over the tree, with every limit and lookup on the way.
//
// The walk keeps its own stack of open trees instead of recursing, so a hostile tree
// nested ten thousand deep (or one that names itself) ends in a clear error rather than a
// stack overflow on a worker thread's small stack. Entries are read in place and counted
// as they are reached, so the work done on a tree that expands to billions of entries
// stops, in proportion to the limit, at the first entry past it.
#include "webgames/git/CheckoutPlan.hpp"

#include "webgames/git/GitTree.hpp"
#include "webgames/git/Sha1.hpp"

#include <stdexcept>

namespace corvandell::git {

namespace {

constexpr std::uint32_t kTypeMask = 0xF000;
constexpr std::uint32_t kDirectoryType = 0x4000;
constexpr std::uint32_t kRegularFileType = 0x8000;

const GitObject& find_object(const ObjectSet& objects, std::string_view rawId, const char* missingText) {
    const auto found = objects.find(hex_of(rawId));
    if (found == objects.end()) {
        throw std::runtime_error(missingText);
    }
    return found->second;
}

} // namespace

CheckoutPlan plan_checkout(const ObjectSet& objects, const std::string& treeName,
                           const CheckoutLimits& limits) {
    using Kind = CheckoutStep::Kind;
    const auto root = objects.find(treeName);
    if (root == objects.end()) {
        throw std::runtime_error("missing tree object in pack");
    }
    CheckoutPlan plan;
    std::size_t entryCount = 0;
    std::vector<TreeEntryReader> open{TreeEntryReader(root->second.data)};
    while (!open.empty()) {
        TreeEntryView entry;
        if (!open.back().next(entry)) {
            open.pop_back();
            if (!open.empty()) {
                plan.steps.push_back({Kind::LeaveFolder, {}, {}});
            }
            continue;
        }
        if (++entryCount > limits.maxEntries) {
            throw std::runtime_error("too many files in the repository");
        }
        if (!is_safe_entry_name(entry.name)) {
            continue;
        }
        const std::uint32_t type = entry.mode & kTypeMask;
        if (type == kDirectoryType) {
            if (open.size() > limits.maxDepth) {
                throw std::runtime_error("tree nesting too deep");
            }
            const GitObject& tree = find_object(objects, entry.rawId, "missing tree object in pack");
            plan.steps.push_back({Kind::EnterFolder, entry.name, {}});
            open.emplace_back(tree.data);
        } else if (type == kRegularFileType) {
            const GitObject& blob = find_object(objects, entry.rawId, "missing blob object in pack");
            if (blob.data.size() > limits.maxBytes - plan.byteCount) {
                throw std::runtime_error("repository too large");
            }
            plan.byteCount += blob.data.size();
            ++plan.fileCount;
            plan.steps.push_back({Kind::WriteFile, entry.name, blob.data});
        }
    }
    return plan;
}

} // namespace corvandell::git
