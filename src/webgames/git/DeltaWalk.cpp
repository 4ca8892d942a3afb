// The delta walk: bases first, each delta right after the base it is made on.
//
// The pack order a resolution would follow keeps a base alive until its last delta turns
// up, anywhere later in the pack; walking the base's own list of deltas instead holds it
// only while that list is worked through, and releases it before the last delta's result
// is walked in turn, so a chain of any length holds two contents at a time. Each content
// is made exactly once, at the size its delta announces. A base is held while the deltas
// before its last are walked, so the delta with the most below it goes last: then any
// path down the walk passes at most log2(entries) bases that wait on a later delta.
//
// Failures must come out as a resolution in pack order would meet them. In pack order,
// every offset delta's base (always earlier) is done before the delta, so the failure met
// first is the failing entry that comes first; each delta is applied under the byte
// allowance it would have had in pack order, which the announced sizes of the deltas
// before it give, since every one of them succeeded when it matters.
#include "webgames/git/DeltaWalk.hpp"

#include "webgames/git/Delta.hpp"
#include "webgames/git/PackEntries.hpp"

#include <algorithm>
#include <string>
#include <utility>

namespace corvandell::git {

namespace {

struct Frame {
    std::size_t entry = 0;
    std::string content;
    std::vector<std::uint32_t> byName; // reference deltas on it, walked first
    std::size_t nextByName = 0;
    std::size_t nextChild = 0; // into the offset children list
    std::size_t endChild = 0;

    bool isDone() const { return nextByName == byName.size() && nextChild == endChild; }
};

class DeltaWalk {
public:
    DeltaWalk(PackBytes& pack, std::vector<PackIndexEntry>& entries, PackIndexStats& stats)
        : pack_(pack), entries_(entries), stats_(stats), childStart_(entries.size() + 1, 0) {}

    void link(const std::vector<std::size_t>& baseOffsets);
    void wait_by_name(std::vector<std::pair<Sha1Digest, std::uint32_t>> referenceBases);
    void walk_from(std::size_t root, const std::vector<std::uint64_t>& allowances);
    PackError result() const;

private:
    void fail(std::size_t entry, PackError why) {
        if (entry < failedEntry_) {
            failedEntry_ = entry;
            failure_ = why;
        }
    }
    std::optional<std::size_t> at_offset(std::size_t offset) const;
    std::vector<std::uint32_t> claim_by_name(const Sha1Digest& name);
    bool push(std::vector<Frame>& stack, std::size_t entry, std::string& content);
    void hold(std::size_t bytes) {
        heldBytes_ += bytes;
        stats_.peakContentBytes = std::max(stats_.peakContentBytes, heldBytes_);
    }
    void release(std::string& content) {
        heldBytes_ -= content.size();
        std::string().swap(content);
    }

    PackBytes& pack_;
    std::vector<PackIndexEntry>& entries_;
    PackIndexStats& stats_;
    std::vector<std::uint32_t> childStart_; // entry i's deltas: children_[childStart_[i], childStart_[i + 1])
    std::vector<std::uint32_t> children_;
    // Reference deltas by base name; a claimed one's entry becomes kNoBase.
    std::vector<std::pair<Sha1Digest, std::uint32_t>> waitingByName_;
    std::uint64_t heldBytes_ = 0;
    std::size_t failedEntry_ = SIZE_MAX;
    PackError failure_ = PackError::None;
};

std::optional<std::size_t> DeltaWalk::at_offset(std::size_t offset) const {
    const auto found =
        std::lower_bound(entries_.begin(), entries_.end(), offset,
                         [](const PackIndexEntry& entry, std::size_t value) { return entry.offset < value; });
    if (found == entries_.end() || found->offset != offset) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(found - entries_.begin());
}

// Children lists in pack order, as one array cut by per-entry starts.
void DeltaWalk::link(const std::vector<std::size_t>& baseOffsets) {
    std::vector<std::uint32_t> bases(entries_.size(), PackIndexEntry::kNoBase);
    for (std::size_t index = 0; index < entries_.size(); ++index) {
        switch (entries_[index].packType) {
        case kPackCommit:
        case kPackTree:
        case kPackBlob:
        case kPackTag:
        case kPackRefDelta:
            continue;
        case kPackOffsetDelta:
            break;
        default:
            fail(index, PackError::UnknownType);
            continue;
        }
        const auto base = at_offset(baseOffsets[index]);
        if (!base) {
            fail(index, PackError::MissingBase);
        } else if (*base == index) {
            fail(index, PackError::DeltaCycle);
        } else {
            bases[index] = static_cast<std::uint32_t>(*base);
            ++childStart_[*base + 1];
        }
    }
    for (std::size_t index = 0; index < entries_.size(); ++index) {
        childStart_[index + 1] += childStart_[index];
    }
    children_.resize(childStart_.back());
    std::vector<std::uint32_t> filled(childStart_.begin(), childStart_.end() - 1);
    for (std::size_t index = 0; index < entries_.size(); ++index) {
        if (bases[index] != PackIndexEntry::kNoBase) {
            children_[filled[bases[index]]++] = static_cast<std::uint32_t>(index);
        }
    }
    // Deltas come after their bases, so one backward sweep sums every subtree.
    std::vector<std::uint32_t>& below = filled;
    std::fill(below.begin(), below.end(), 1);
    for (std::size_t index = entries_.size(); index-- > 0;) {
        if (bases[index] != PackIndexEntry::kNoBase) {
            below[bases[index]] += below[index];
        }
    }
    for (std::size_t index = 0; index < entries_.size(); ++index) {
        const auto first = children_.begin() + childStart_[index];
        const auto last = children_.begin() + childStart_[index + 1];
        if (last - first > 1) {
            std::iter_swap(
                std::max_element(first, last,
                                 [&below](std::uint32_t a, std::uint32_t b) { return below[a] < below[b]; }),
                last - 1);
        }
    }
}

void DeltaWalk::wait_by_name(std::vector<std::pair<Sha1Digest, std::uint32_t>> referenceBases) {
    waitingByName_ = std::move(referenceBases);
    std::sort(waitingByName_.begin(), waitingByName_.end());
}

std::vector<std::uint32_t> DeltaWalk::claim_by_name(const Sha1Digest& name) {
    std::vector<std::uint32_t> claimed;
    auto at = std::lower_bound(waitingByName_.begin(), waitingByName_.end(),
                               std::pair<Sha1Digest, std::uint32_t>{name, 0});
    for (; at != waitingByName_.end() && at->first == name; ++at) {
        if (at->second != PackIndexEntry::kNoBase) {
            claimed.push_back(std::exchange(at->second, PackIndexEntry::kNoBase));
        }
    }
    return claimed;
}

// Pushes the entry, just named, with `content` if any delta waits on it.
bool DeltaWalk::push(std::vector<Frame>& stack, std::size_t entry, std::string& content) {
    auto byName = claim_by_name(entries_[entry].name);
    if (byName.empty() && childStart_[entry] == childStart_[entry + 1]) {
        return false;
    }
    stack.push_back(
        {entry, std::move(content), std::move(byName), 0, childStart_[entry], childStart_[entry + 1]});
    return true;
}

void DeltaWalk::walk_from(std::size_t root, const std::vector<std::uint64_t>& allowances) {
    const bool hasByName = std::binary_search(waitingByName_.begin(), waitingByName_.end(),
                                              std::pair<Sha1Digest, std::uint32_t>{entries_[root].name, 0},
                                              [](const auto& a, const auto& b) { return a.first < b.first; });
    if (!hasByName && childStart_[root] == childStart_[root + 1]) {
        return;
    }
    auto content = inflate_entry_again(pack_, entries_[root]);
    if (!content) {
        fail(root, PackError::BadStream);
        return;
    }
    hold(content->size());
    std::vector<Frame> stack;
    if (!push(stack, root, *content)) {
        release(*content);
    }
    while (!stack.empty()) {
        Frame& top = stack.back();
        if (top.isDone()) {
            release(top.content);
            stack.pop_back();
            continue;
        }
        const std::size_t child =
            top.nextByName < top.byName.size() ? top.byName[top.nextByName++] : children_[top.nextChild++];
        const auto delta = inflate_entry_again(pack_, entries_[child]);
        if (!delta) {
            fail(child, PackError::BadStream);
            continue;
        }
        DeltaError error = DeltaError::None;
        auto result = apply_delta(top.content, *delta, &error, static_cast<std::size_t>(allowances[child]));
        if (!result) {
            const bool isTooLarge = error == DeltaError::TooLarge || error == DeltaError::OutOfMemory;
            fail(child, isTooLarge ? PackError::TooLarge : PackError::BadDelta);
            continue;
        }
        hold(result->size());
        PackIndexEntry& entry = entries_[child];
        entry.base = static_cast<std::uint32_t>(top.entry);
        entry.type = entries_[top.entry].type;
        entry.size = result->size();
        entry.name = object_digest(entry.type, *result);
        entries_[top.entry].isBase = true;
        if (top.isDone()) { // its last use: gone before the walk goes deeper
            release(top.content);
            stack.pop_back();
        }
        if (!push(stack, child, *result)) {
            release(*result);
        }
    }
}

PackError DeltaWalk::result() const {
    if (failure_ != PackError::None) {
        return failure_;
    }
    const bool isAllResolved = std::all_of(entries_.begin(), entries_.end(), [](const PackIndexEntry& entry) {
        return (entry.packType != kPackOffsetDelta && entry.packType != kPackRefDelta) || entry.isDelta();
    });
    return isAllResolved ? PackError::None : PackError::MissingBase;
}

} // namespace

PackError walk_deltas(PackBytes& pack, std::vector<PackIndexEntry>& entries, DeltaWalkInput input,
                      ByteBudget budget, PackIndexStats& stats) {
    DeltaWalk walk(pack, entries, stats);
    walk.link(input.baseOffsets);
    std::vector<std::size_t>().swap(input.baseOffsets);
    walk.wait_by_name(std::move(input.referenceBases));
    // Each delta's allowance in place of its announced size. A delta over its allowance
    // fails, so the sizes after it never count.
    std::vector<std::uint64_t>& allowances = input.targetSizes;
    for (std::size_t index = 0; index < entries.size(); ++index) {
        if (entries[index].packType != kPackOffsetDelta && entries[index].packType != kPackRefDelta) {
            continue;
        }
        const std::uint64_t target = allowances[index];
        allowances[index] = budget.allowance();
        (void)budget.take(target);
    }
    for (std::size_t index = 0; index < entries.size(); ++index) {
        if (entries[index].packType >= kPackCommit && entries[index].packType <= kPackTag) {
            walk.walk_from(index, allowances);
        }
    }
    return walk.result();
}

} // namespace corvandell::git
