// Where a checkout finds objects by name: an object set in memory, or an indexed pack read
// back on demand, so a checkout needs no more than one object of either at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "webgames/git/Packfile.hpp"

namespace corvandell::git {

class ObjectSource {
public:
    virtual ~ObjectSource() = default;
    // The content of the object with this 20-byte name, or null when no object has that
    // name. Shared, so a caller may hold several at once without copying them; one from an
    // object set views the set, which must outlive it.
    virtual std::shared_ptr<const std::string> read(std::string_view rawName) = 0;
    // The content's size, without reading it.
    virtual std::optional<std::uint64_t> size_of(std::string_view rawName) = 0;
};

class ObjectSetSource final : public ObjectSource {
public:
    explicit ObjectSetSource(const ObjectSet& objects) : objects_(objects) {}
    std::shared_ptr<const std::string> read(std::string_view rawName) override;
    std::optional<std::uint64_t> size_of(std::string_view rawName) override;

private:
    const GitObject* find(std::string_view rawName) const;

    const ObjectSet& objects_;
};

} // namespace corvandell::git
