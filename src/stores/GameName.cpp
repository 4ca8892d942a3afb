// Bytes outside ASCII are dropped rather than lower-cased: a UTF-8 letter has no ASCII
// form, and locale-dependent case rules would make matching differ between machines.
#include "stores/GameName.hpp"

namespace corvandell {

std::string normalizeGameName(std::string_view name) {
    std::string normalized;
    normalized.reserve(name.size());
    for (const char c : name) {
        if (c >= 'A' && c <= 'Z') {
            normalized.push_back(static_cast<char>(c - 'A' + 'a'));
        } else if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) {
            normalized.push_back(c);
        }
    }
    return normalized;
}

} // namespace corvandell
