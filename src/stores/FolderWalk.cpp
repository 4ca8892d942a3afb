// The walks are driven through the error_code overloads only, so nothing here throws; the
// link check runs on directories alone, which keeps its cost (one attribute read on
// Windows) off the hundreds of thousands of files a Steam library holds.
#include "stores/FolderWalk.hpp"

#include "stores/StoreFiles.hpp"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <type_traits>

namespace corvandell {

namespace {

template <typename Char> bool isValidUtf16(std::basic_string_view<Char> units) {
    for (size_t i = 0; i < units.size(); ++i) {
        const auto unit = static_cast<std::uint32_t>(units[i]);
        if (unit >= 0xDC00 && unit <= 0xDFFF) {
            return false;
        }
        if (unit >= 0xD800 && unit <= 0xDBFF) {
            const bool isPaired = i + 1 < units.size() &&
                                  static_cast<std::uint32_t>(units[i + 1]) >= 0xDC00 &&
                                  static_cast<std::uint32_t>(units[i + 1]) <= 0xDFFF;
            if (!isPaired) {
                return false;
            }
            ++i;
        }
    }
    return true;
}

// Names are UTF-16 where paths are wide (Windows) and UTF-8 bytes elsewhere.
template <typename Char> bool isValidName(std::basic_string_view<Char> name) {
    if constexpr (sizeof(Char) == 2) {
        return isValidUtf16(name);
    } else {
        return isValidUtf8(std::string_view(name.data(), name.size()));
    }
}

// Whether the walk may go into or report the entry; notes why not when it may not.
bool isWalkable(const std::filesystem::directory_entry& entry, bool isDirectory, const WalkSkipNote& onSkip) {
    const char* reason = nullptr;
    if (!hasUnicodeName(entry.path())) {
        reason = kNameNotUnicode;
    } else if (isDirectory && isLinkOrReparsePoint(entry)) {
        reason = kLinkNotFollowed;
    }
    if (reason != nullptr && onSkip) {
        onSkip(entry.path(), reason);
    }
    return reason == nullptr;
}

} // namespace

WalkSkipNote skipNote(ScanReport& report, std::string_view storeName) {
    return [&report, name = std::string(storeName)](const std::filesystem::path& entry,
                                                    const std::string& reason) {
        report.skip(name, utf8Text(entry), reason);
    };
}

bool hasUnicodeName(const std::filesystem::path& path) {
    using Char = std::filesystem::path::value_type;
    const std::basic_string_view<Char> native = path.native();
    // Only the last component is checked (everything before it was checked on the way in),
    // and without allocating: this runs for every entry of every walk.
    size_t start = native.size();
    bool isAscii = true;
    while (start > 0 && native[start - 1] != Char('/') &&
           native[start - 1] != static_cast<Char>(std::filesystem::path::preferred_separator)) {
        isAscii = isAscii && static_cast<std::make_unsigned_t<Char>>(native[start - 1]) < 0x80;
        --start;
    }
    return isAscii || isValidName(native.substr(start));
}

void walkFiles(const std::filesystem::path& folder,
               const std::function<void(const std::filesystem::directory_entry& file, int depth)>& onFile,
               const WalkSkipNote& onSkip) {
    std::error_code error;
    std::filesystem::recursive_directory_iterator it(
        folder, std::filesystem::directory_options::skip_permission_denied, error);
    for (const std::filesystem::recursive_directory_iterator end; !error && it != end; it.increment(error)) {
        std::error_code typeError;
        const bool isDirectory = it->is_directory(typeError);
        if (!isWalkable(*it, isDirectory, onSkip)) {
            it.disable_recursion_pending();
            continue;
        }
        if (!isDirectory && it->is_regular_file(typeError)) {
            onFile(*it, it.depth());
        }
    }
}

std::vector<std::filesystem::path> listSubfolders(const std::filesystem::path& folder,
                                                  const WalkSkipNote& onSkip) {
    std::vector<std::filesystem::path> subfolders;
    std::error_code error;
    std::filesystem::directory_iterator it(folder, std::filesystem::directory_options::skip_permission_denied,
                                           error);
    for (const std::filesystem::directory_iterator end; !error && it != end; it.increment(error)) {
        std::error_code typeError;
        if (it->is_directory(typeError) && isWalkable(*it, true, onSkip)) {
            subfolders.push_back(it->path());
        }
    }
    std::sort(subfolders.begin(), subfolders.end());
    return subfolders;
}

} // namespace corvandell
