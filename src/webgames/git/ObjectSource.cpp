#include "webgames/git/ObjectSource.hpp"

#include "webgames/git/Sha1.hpp"

namespace corvandell::git {

const GitObject* ObjectSetSource::find(std::string_view rawName) const {
    const auto found = objects_.find(hex_of(rawName));
    return found == objects_.end() ? nullptr : &found->second;
}

std::optional<std::string_view> ObjectSetSource::read(std::string_view rawName, std::string&) {
    const GitObject* object = find(rawName);
    if (object == nullptr) {
        return std::nullopt;
    }
    return object->data;
}

std::optional<std::uint64_t> ObjectSetSource::size_of(std::string_view rawName) {
    const GitObject* object = find(rawName);
    if (object == nullptr) {
        return std::nullopt;
    }
    return object->data.size();
}

} // namespace corvandell::git
