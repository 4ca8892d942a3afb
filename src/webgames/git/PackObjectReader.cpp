#include "webgames/git/PackObjectReader.hpp"

#include "webgames/git/Delta.hpp"
#include "webgames/git/PackEntries.hpp"

#include <algorithm>

namespace corvandell::git {

namespace {

constexpr std::size_t kCachedBases = 16;
constexpr std::uint64_t kCachedBytes = std::uint64_t{16} << 20;

// Bases, which other reads are likely to need, and trees, since one tree may be named by
// many folders and a checkout plan reads it again for each.
bool is_worth_keeping(const PackIndexEntry& entry) {
    return entry.isBase || entry.type == kPackTree;
}

} // namespace

std::shared_ptr<const std::string> PackObjectReader::cached(std::size_t entry) {
    const auto found = std::find_if(cache_.begin(), cache_.end(),
                                    [entry](const CachedBase& base) { return base.entry == entry; });
    if (found == cache_.end()) {
        return nullptr;
    }
    std::rotate(found, found + 1, cache_.end()); // now the most recently used
    return cache_.back().content;
}

void PackObjectReader::keep(std::size_t entry, std::shared_ptr<const std::string> content) {
    if (content->size() > kCachedBytes / 2) {
        return;
    }
    cachedBytes_ += content->size();
    cache_.push_back({entry, std::move(content)});
    while (cache_.size() > kCachedBases || cachedBytes_ > kCachedBytes) {
        cachedBytes_ -= cache_.front().content->size();
        cache_.erase(cache_.begin());
    }
}

// Walks down the chain to a cached base or a whole object, then applies the deltas back up,
// each result sized once from what its delta announces (the index's size for it).
std::shared_ptr<const std::string> PackObjectReader::content(std::size_t entry) {
    const auto& entries = index_.entries();
    std::vector<std::size_t> chain;
    std::shared_ptr<const std::string> current;
    for (std::size_t at = entry;; at = entries[at].base) {
        if (chain.size() > entries.size()) {
            return nullptr; // an index whose bases loop was not made by index_pack
        }
        if ((current = cached(at))) {
            break;
        }
        if (!entries[at].isDelta()) {
            auto whole = inflate_entry_again(pack_, entries[at]);
            if (!whole) {
                return nullptr;
            }
            current = std::make_shared<const std::string>(std::move(*whole));
            if (is_worth_keeping(entries[at])) {
                keep(at, current);
            }
            break;
        }
        chain.push_back(at);
    }
    while (!chain.empty()) {
        const std::size_t at = chain.back();
        chain.pop_back();
        const auto delta = inflate_entry_again(pack_, entries[at]);
        if (!delta) {
            return nullptr;
        }
        auto result = apply_delta(*current, *delta, nullptr, entries[at].size);
        if (!result || result->size() != entries[at].size) {
            return nullptr;
        }
        current = std::make_shared<const std::string>(std::move(*result));
        if (is_worth_keeping(entries[at])) {
            keep(at, current);
        }
    }
    return current;
}

std::shared_ptr<const std::string> PackObjectReader::read(std::string_view rawName) {
    const auto entry = index_.find_raw(rawName);
    return entry ? content(*entry) : nullptr;
}

std::optional<std::uint64_t> PackObjectReader::size_of(std::string_view rawName) {
    const auto entry = index_.find_raw(rawName);
    if (!entry) {
        return std::nullopt;
    }
    return index_.entries()[*entry].size;
}

} // namespace corvandell::git
