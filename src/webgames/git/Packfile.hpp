// Decoding a whole git pack held in memory into named objects.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace corvandell::git {

struct GitObject {
    std::int32_t type = 0; // 1 commit, 2 tree, 3 blob, 4 tag
    std::string id;        // 40 lower-case hexadecimal digits
    std::string data;      // content without the "type size\0" header
};

using ObjectSet = std::map<std::string, GitObject>;

// Takes the object header ("blob 12\0") and the content; returns the 40-digit name.
using ObjectNameFunction = std::function<std::string(std::string_view header, std::string_view content)>;

// No value for any malformed pack; never throws on bad data.
std::optional<ObjectSet> parse_packfile(std::string_view pack, const ObjectNameFunction& objectName);

} // namespace corvandell::git
