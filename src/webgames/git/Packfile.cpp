// Resolves the deltas of a pack and names every object.
//
// Entries are resolved in pack order, each exactly once; a delta waits on its base through
// an explicit stack rather than recursion, so a chain of ten thousand deltas or a base
// that ends up depending on its own delta fails cleanly instead of exhausting the stack.
// Offset deltas always point backwards, so in pack order their base is already done and
// the stack stays shallow; only reference deltas whose base comes later make it grow,
// through the forward scan that names entries until the wanted name turns up.
// Contents move from the inflated entry to the result without copies, and a delta's own
// bytes are released as soon as it has been applied. Every inflated entry and every delta
// result is charged to one byte budget before its memory is taken, and running out of
// memory anyway is reported as the same refusal rather than thrown.
#include "webgames/git/Packfile.hpp"

#include "webgames/git/Delta.hpp"
#include "webgames/git/PackEntries.hpp"
#include "webgames/git/PackResolve.hpp"

#include <algorithm>
#include <new>
#include <numeric>
#include <unordered_map>
#include <vector>

namespace corvandell::git {

namespace {

// The longest chain of deltas waiting on one another that is still resolved.
constexpr std::size_t kMaxDeltaDepth = 10000;

using State = ResolveState;
using Resolved = ResolvedEntry;

class Resolver {
public:
    Resolver(std::vector<PackEntry>& entries, const ObjectNameFunction& objectName, ByteBudget& budget)
        : entries_(entries), resolved_(entries.size()), objectName_(objectName), budget_(budget) {
        hasRefDeltas_ = std::any_of(entries.begin(), entries.end(),
                                    [](const PackEntry& entry) { return entry.type == kPackRefDelta; });
    }

    bool resolve(std::size_t index);
    PackError failure() const { return failure_; }
    std::vector<Resolved> take() { return std::move(resolved_); }

private:
    enum class Step { Finished, Wait, Fail };

    Step fail(PackError why) {
        failure_ = why;
        return Step::Fail;
    }
    Step step(std::size_t index, std::size_t& waitFor);
    Step apply(std::size_t index, std::size_t base);
    void complete(std::size_t index, std::int32_t type, std::string content);
    std::optional<std::size_t> at_offset(std::size_t offset) const;
    std::optional<std::size_t> next_scan_candidate();

    std::vector<PackEntry>& entries_;
    std::vector<Resolved> resolved_;
    const ObjectNameFunction& objectName_;
    ByteBudget& budget_;
    PackError failure_ = PackError::None;
    bool hasRefDeltas_ = false;
    std::unordered_map<std::string, std::size_t> byName_;
    std::size_t scanCursor_ = 0;
};

bool Resolver::resolve(std::size_t index) {
    if (resolved_[index].state == State::Done) {
        return true;
    }
    std::vector<std::size_t> stack{index};
    resolved_[index].state = State::Pending;
    while (!stack.empty()) {
        std::size_t waitFor = 0;
        switch (step(stack.back(), waitFor)) {
        case Step::Finished:
            stack.pop_back();
            break;
        case Step::Wait:
            if (stack.size() > kMaxDeltaDepth) {
                failure_ = PackError::ChainTooDeep;
                return false;
            }
            resolved_[waitFor].state = State::Pending;
            stack.push_back(waitFor);
            break;
        case Step::Fail:
            return false;
        }
    }
    return true;
}

// One attempt at an entry: finished, blocked on another entry, or impossible.
Resolver::Step Resolver::step(std::size_t index, std::size_t& waitFor) {
    PackEntry& entry = entries_[index];
    std::optional<std::size_t> base;
    switch (entry.type) {
    case kPackCommit:
    case kPackTree:
    case kPackBlob:
    case kPackTag:
        complete(index, entry.type, std::move(entry.data));
        return Step::Finished;
    case kPackOffsetDelta:
        base = at_offset(entry.baseOffset);
        break;
    case kPackRefDelta:
        if (const auto found = byName_.find(entry.baseName); found != byName_.end()) {
            base = found->second;
        } else if (const auto candidate = next_scan_candidate()) {
            waitFor = *candidate;
            return Step::Wait;
        }
        break;
    default:
        return fail(PackError::UnknownType);
    }
    if (!base) {
        return fail(PackError::MissingBase);
    }
    switch (resolved_[*base].state) {
    case State::Done:
        return apply(index, *base);
    case State::Pending:
        return fail(PackError::DeltaCycle); // the base waits, directly or not, on this very entry
    case State::Unresolved:
        waitFor = *base;
        return Step::Wait;
    }
    return fail(PackError::UnknownType);
}

Resolver::Step Resolver::apply(std::size_t index, std::size_t base) {
    DeltaError error = DeltaError::None;
    auto result = apply_delta(resolved_[base].content, entries_[index].data, &error,
                              static_cast<std::size_t>(budget_.allowance()));
    if (!result) {
        const bool isTooLarge = error == DeltaError::TooLarge || error == DeltaError::OutOfMemory;
        return fail(isTooLarge ? PackError::TooLarge : PackError::BadDelta);
    }
    if (!budget_.take(result->size())) {
        return fail(PackError::TooLarge); // cannot happen: the allowance was the limit
    }
    std::string().swap(entries_[index].data);
    resolved_[index].base = base;
    complete(index, resolved_[base].type, std::move(*result));
    return Step::Finished;
}

void Resolver::complete(std::size_t index, std::int32_t type, std::string content) {
    Resolved& resolved = resolved_[index];
    const std::string header = object_header(type, content.size());
    resolved.name = objectName_(header, content);
    resolved.type = type;
    resolved.content = std::move(content);
    resolved.state = State::Done;
    if (hasRefDeltas_) {
        byName_.emplace(resolved.name, index);
    }
}

std::optional<std::size_t> Resolver::at_offset(std::size_t offset) const {
    const auto found =
        std::lower_bound(entries_.begin(), entries_.end(), offset,
                         [](const PackEntry& entry, std::size_t value) { return entry.offset < value; });
    if (found == entries_.end() || found->offset != offset) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(found - entries_.begin());
}

// Every entry before the cursor is named or pending, so a name not yet seen can only
// belong to an entry at or after it; pending entries, this one included, are never
// candidates.
std::optional<std::size_t> Resolver::next_scan_candidate() {
    while (scanCursor_ < resolved_.size() && resolved_[scanCursor_].state != State::Unresolved) {
        ++scanCursor_;
    }
    if (scanCursor_ == resolved_.size()) {
        return std::nullopt;
    }
    return scanCursor_;
}

// Inserted in name order so each insertion is at the end; of equal names the last in
// pack order wins, as if each had replaced the one before.
ObjectSet object_set_of(std::vector<Resolved>& entries) {
    std::vector<std::size_t> order(entries.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&entries](std::size_t a, std::size_t b) { return entries[a].name < entries[b].name; });
    ObjectSet objects;
    for (std::size_t position = 0; position < order.size(); ++position) {
        Resolved& resolved = entries[order[position]];
        if (position + 1 < order.size() && entries[order[position + 1]].name == resolved.name) {
            continue;
        }
        std::string key = resolved.name;
        objects.emplace_hint(objects.end(), std::move(key),
                             GitObject{resolved.type, std::move(resolved.name), std::move(resolved.content)});
    }
    return objects;
}

} // namespace

std::optional<std::vector<ResolvedEntry>> resolve_pack_entries(std::vector<PackEntry>& entries,
                                                               const ObjectNameFunction& objectName,
                                                               ByteBudget& budget, PackError& reason) {
    Resolver resolver(entries, objectName, budget);
    for (std::size_t index = 0; index < entries.size(); ++index) {
        if (!resolver.resolve(index)) {
            reason = resolver.failure();
            return std::nullopt;
        }
    }
    return resolver.take();
}

namespace {

// `owned`, when given, holds the pack and is emptied once the entries are inflated.
std::optional<ObjectSet> decode_pack(std::string_view pack, std::string* owned,
                                     const ObjectNameFunction& objectName, PackError* error,
                                     const ByteLimits& limits) {
    PackError ignored = PackError::None;
    PackError& reason = error != nullptr ? *error : ignored;
    reason = PackError::None;
    try {
        ByteBudget budget(limits, pack.size());
        auto entries = read_pack_entries(pack, budget, &reason);
        if (owned != nullptr) {
            std::string().swap(*owned);
        }
        if (!entries) {
            return std::nullopt;
        }
        auto resolved = resolve_pack_entries(*entries, objectName, budget, reason);
        if (!resolved) {
            return std::nullopt;
        }
        return object_set_of(*resolved);
    } catch (const std::bad_alloc&) {
        reason = PackError::TooLarge;
        return std::nullopt;
    }
}

} // namespace

std::optional<ObjectSet> parse_packfile(std::string_view pack, const ObjectNameFunction& objectName,
                                        PackError* error, const ByteLimits& limits) {
    return decode_pack(pack, nullptr, objectName, error, limits);
}

std::optional<ObjectSet> parse_packfile(std::string&& pack, const ObjectNameFunction& objectName,
                                        PackError* error, const ByteLimits& limits) {
    std::string owned = std::move(pack);
    return decode_pack(owned, &owned, objectName, error, limits);
}

} // namespace corvandell::git
