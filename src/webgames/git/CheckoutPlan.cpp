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

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace corvandell::git {

namespace {

constexpr std::uint32_t kTypeMask = 0xF000;
constexpr std::uint32_t kDirectoryType = 0x4000;
constexpr std::uint32_t kRegularFileType = 0x8000;

// Kept in `open` while its reader views it; the string itself never moves.
std::string_view read_tree_object(ObjectSource& objects, std::string_view rawName,
                                  std::vector<std::shared_ptr<const std::string>>& open) {
    auto content = objects.read(rawName);
    if (!content) {
        throw std::runtime_error("missing tree object in pack");
    }
    return *open.emplace_back(std::move(content));
}

} // namespace

CheckoutPlan plan_checkout(ObjectSource& objects, const std::string& treeName, const CheckoutLimits& limits) {
    using Kind = CheckoutStep::Kind;
    const auto root = digest_of_hex(treeName);
    if (!root) {
        throw std::runtime_error("missing tree object in pack");
    }
    CheckoutPlan plan;
    std::size_t entryCount = 0;
    std::vector<std::shared_ptr<const std::string>> trees;
    std::vector<TreeEntryReader> open{TreeEntryReader(read_tree_object(objects, raw_of(*root), trees))};
    while (!open.empty()) {
        TreeEntryView entry;
        if (!open.back().next(entry)) {
            open.pop_back();
            trees.pop_back();
            if (!open.empty()) {
                plan.steps.push_back({Kind::LeaveFolder, 0, 0, {}, 0});
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
            plan.steps.push_back({Kind::EnterFolder, plan.names.size(), entry.name.size(), {}, 0});
            plan.names.append(entry.name);
            open.emplace_back(read_tree_object(objects, entry.rawId, trees));
        } else if (type == kRegularFileType) {
            const auto size = objects.size_of(entry.rawId);
            if (!size) {
                throw std::runtime_error("missing blob object in pack");
            }
            if (*size > limits.maxBytes - plan.byteCount) {
                throw std::runtime_error("repository too large");
            }
            plan.byteCount += *size;
            ++plan.fileCount;
            CheckoutStep& step = plan.steps.emplace_back(
                CheckoutStep{Kind::WriteFile, plan.names.size(), entry.name.size(), {}, *size});
            plan.names.append(entry.name);
            std::copy(entry.rawId.begin(), entry.rawId.end(), reinterpret_cast<char*>(step.blob.data()));
        }
    }
    return plan;
}

CheckoutPlan plan_checkout(const ObjectSet& objects, const std::string& treeName,
                           const CheckoutLimits& limits) {
    ObjectSetSource source(objects);
    return plan_checkout(source, treeName, limits);
}

} // namespace corvandell::git
