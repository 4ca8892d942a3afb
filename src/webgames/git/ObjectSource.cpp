#include "webgames/git/ObjectSource.hpp"

#include "webgames/git/Sha1.hpp"

namespace corvandell::git {

const GitObject* ObjectSetSource::find(std::string_view rawName) const {
    const auto found = objects_.find(hex_of(rawName));
    return found == objects_.end() ? nullptr : &found->second;
}

std::shared_ptr<const std::string> ObjectSetSource::read(std::string_view rawName) {
    const GitObject* object = find(rawName);
    if (object == nullptr) {
        return nullptr;
    }
    return std::shared_ptr<const std::string>(std::shared_ptr<void>(), &object->data); // owns nothing
}

std::optional<std::uint64_t> ObjectSetSource::size_of(std::string_view rawName) {
    const GitObject* object = find(rawName);
    if (object == nullptr) {
        return std::nullopt;
    }
    return object->data.size();
}

} // namespace corvandell::git
