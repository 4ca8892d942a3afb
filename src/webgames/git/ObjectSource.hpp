// Where a checkout finds objects by name: an object set in memory, or an indexed pack read
// back on demand, so a checkout needs no more than one object of either at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "webgames/git/Packfile.hpp"

namespace corvandell::git {

class ObjectSource {
public:
    virtual ~ObjectSource() = default;
    // The content of the object with this 20-byte name, viewing either the source's own
    // bytes or `buffer`, which it may fill; valid until the next call. No value when no
    // object has that name.
    virtual std::optional<std::string_view> read(std::string_view rawName, std::string& buffer) = 0;
    // The content's size, without reading it.
    virtual std::optional<std::uint64_t> size_of(std::string_view rawName) = 0;
};

class ObjectSetSource final : public ObjectSource {
public:
    explicit ObjectSetSource(const ObjectSet& objects) : objects_(objects) {}
    std::optional<std::string_view> read(std::string_view rawName, std::string& buffer) override;
    std::optional<std::uint64_t> size_of(std::string_view rawName) override;

private:
    const GitObject* find(std::string_view rawName) const;

    const ObjectSet& objects_;
};

} // namespace corvandell::git
