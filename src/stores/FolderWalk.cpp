// The walk keeps one path buffer and one listing per depth, reused for every folder at that
// depth, so a walk over a whole Steam library allocates next to nothing; the link check
// comes with each listing (see base/FolderListing.hpp) instead of a call per entry.
#include "stores/FolderWalk.hpp"

#include "stores/StoreFiles.hpp"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <string_view>
#include <type_traits>

namespace corvandell {

namespace {

using Char = std::filesystem::path::value_type;
constexpr Char kSeparator = std::filesystem::path::preferred_separator;

template <typename Unit> bool isValidUtf16(std::basic_string_view<Unit> units) {
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

// Names are UTF-16 where paths are wide (Windows) and UTF-8 bytes elsewhere. A template,
// so only the platform's own branch is compiled.
template <typename Unit> bool isUnicodeName(std::basic_string_view<Unit> name) {
    const bool isAscii = std::all_of(name.begin(), name.end(), [](Unit unit) {
        return static_cast<std::make_unsigned_t<Unit>>(unit) < 0x80;
    });
    if (isAscii) {
        return true;
    }
    if constexpr (sizeof(Unit) == 2) {
        return isValidUtf16(name);
    } else {
        return isValidUtf8(std::string_view(name.data(), name.size()));
    }
}

// Why the walk must leave an entry out, or null when it may go on.
const char* reasonToLeaveOut(NativeView name, ListedKind kind) {
    if (!isUnicodeName(name)) {
        return kNameNotUnicode;
    }
    return kind == ListedKind::FolderLink ? kLinkNotFollowed : nullptr;
}

void appendName(NativeText& path, NativeView name) {
    if (!path.empty() && path.back() != kSeparator && path.back() != Char('/')) {
        path += kSeparator;
    }
    path.append(name);
}

} // namespace

WalkSkipNote skipNote(ScanReport& report, std::string_view storeName) {
    return [&report, name = std::string(storeName)](const std::filesystem::path& entry,
                                                    const std::string& reason) {
        report.skip(name, utf8Text(entry), reason);
    };
}

bool hasUnicodeName(const std::filesystem::path& path) {
    const NativeView native = path.native();
    size_t start = native.size();
    while (start > 0 && native[start - 1] != Char('/') && native[start - 1] != kSeparator) {
        --start;
    }
    return isUnicodeName(native.substr(start));
}

void walkFiles(const std::filesystem::path& folder, const std::function<void(const WalkedFile& file)>& onFile,
               const WalkSkipNote& onSkip) {
    // One frame per open depth: the folder's listing, the next entry to visit, and how long
    // the path buffer was when the folder's entries began to be appended to it.
    struct Frame {
        FolderListing listing;
        size_t next = 0;
        size_t pathLength = 0;
    };
    std::deque<Frame> frames(1); // a deque, so a frame stays put while deeper ones are added
    NativeText path = folder.native();
    if (!frames[0].listing.read(path)) {
        return;
    }
    frames[0].pathLength = path.size();
    size_t depth = 0;
    for (;;) {
        Frame& frame = frames[depth];
        if (frame.next == frame.listing.entries().size()) {
            if (depth == 0) {
                return;
            }
            --depth;
            continue;
        }
        const ListedEntry& entry = frame.listing.entries()[frame.next++];
        if (entry.kind == ListedKind::Other) {
            continue;
        }
        const NativeView name = frame.listing.nameOf(entry);
        path.resize(frame.pathLength);
        appendName(path, name);
        if (const char* reason = reasonToLeaveOut(name, entry.kind)) {
            if (onSkip) {
                onSkip(path, reason);
            }
            continue;
        }
        if (entry.kind == ListedKind::File) {
            onFile(WalkedFile{path, path.size() - name.size(), static_cast<int>(depth)});
            continue;
        }
        if (frames.size() == depth + 1) {
            frames.emplace_back();
        }
        Frame& child = frames[depth + 1];
        if (child.listing.read(path)) {
            child.next = 0;
            child.pathLength = path.size();
            ++depth;
        }
    }
}

std::vector<std::filesystem::path> listSubfolders(const std::filesystem::path& folder,
                                                  const WalkSkipNote& onSkip) {
    std::vector<std::filesystem::path> subfolders;
    FolderListing listing;
    if (!listing.read(folder.native())) {
        return subfolders;
    }
    for (const auto& entry : listing.entries()) {
        if (entry.kind != ListedKind::Folder && entry.kind != ListedKind::FolderLink) {
            continue;
        }
        const NativeView name = listing.nameOf(entry);
        auto subfolder = folder / std::filesystem::path(NativeText(name));
        if (const char* reason = reasonToLeaveOut(name, entry.kind)) {
            if (onSkip) {
                onSkip(subfolder, reason);
            }
            continue;
        }
        subfolders.push_back(std::move(subfolder));
    }
    std::sort(subfolders.begin(), subfolders.end());
    return subfolders;
}

} // namespace corvandell
