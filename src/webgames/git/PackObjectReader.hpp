// Reading objects back from an indexed pack: the entry inflated again and its delta chain
// applied again from the nearest base at hand.
//
// A few recently made bases and trees are kept, since a checkout reads the files of a
// folder one after another and their deltas tend to share bases, and a tree may be named
// many times over; blobs that are nobody's base are never kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "webgames/git/ObjectSource.hpp"
#include "webgames/git/PackIndex.hpp"
#include "webgames/git/PackSource.hpp"

namespace corvandell::git {

class PackObjectReader final : public ObjectSource {
public:
    // Both must outlive the reader.
    PackObjectReader(PackBytes& pack, const PackIndex& index) : pack_(pack), index_(index) {}

    // The content of the object at this entry; no value when the pack no longer reads as it
    // did when indexed. The result may be shared with the cache.
    std::shared_ptr<const std::string> content(std::size_t entry);

    std::shared_ptr<const std::string> read(std::string_view rawName) override;
    std::optional<std::uint64_t> size_of(std::string_view rawName) override;

private:
    std::shared_ptr<const std::string> cached(std::size_t entry);
    void keep(std::size_t entry, std::shared_ptr<const std::string> content);

    struct CachedBase {
        std::size_t entry = 0;
        std::shared_ptr<const std::string> content;
    };

    PackBytes& pack_;
    const PackIndex& index_;
    std::vector<CachedBase> cache_; // least recently used first
    std::uint64_t cachedBytes_ = 0;
};

} // namespace corvandell::git
