// Walking store and game folders so that no folder on disk can stop or derail a scan.
//
// Two traps. A junction or directory symbolic link inside a game folder can point to its
// own parent or to a drive root, and the mingw runtime's std::filesystem does not report a
// junction as a link, so its recursive iterator would descend into it without end: every
// walk asks isLinkOrReparsePoint, whose Windows half reads the entry's attributes, before
// it descends, and never follows the answer "yes". And a name that is not valid Unicode (an
// unpaired surrogate on Windows, bytes that are not UTF-8 elsewhere) has no UTF-8 form for
// our rows and reports, so walks leave such entries out and say so instead of failing.
#pragma once

#include "base/FileLinks.hpp"
#include "base/FolderListing.hpp"

#include "stores/DetectedGame.hpp"

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace corvandell {

// Whether the path's last component is valid UTF-16 (Windows) or UTF-8 (elsewhere).
bool hasUnicodeName(const std::filesystem::path& path);

// Why a walk left an entry out, for the scan report.
inline constexpr char kLinkNotFollowed[] = "a link to another folder, which scans do not follow";
inline constexpr char kNameNotUnicode[] = "the name is not valid Unicode";

using WalkSkipNote = std::function<void(const std::filesystem::path& entry, const std::string& reason)>;

// Notes each entry a walk leaves out as skipped by the store.
WalkSkipNote skipNote(ScanReport& report, std::string_view storeName);

// A file met by walkFiles, valid during the call only: its full path in the platform's
// native text (no std::filesystem::path is built per file; make one where it is needed).
struct WalkedFile {
    const NativeText& nativePath;
    std::size_t nameStart; // where the file's name begins in nativePath
    int depth;             // 0 for the walked folder's own files

    NativeView name() const { return NativeView(nativePath).substr(nameStart); }
    std::filesystem::path path() const { return nativePath; }
};

// Every regular file below the folder, depth first in the order the platform lists them.
// Folder links and badly named entries are left out (noted through onSkip when given) and
// folders that cannot be read passed over. Never throws.
void walkFiles(const std::filesystem::path& folder, const std::function<void(const WalkedFile& file)>& onFile,
               const WalkSkipNote& onSkip = {});

// The direct subfolders, sorted so scans report games in the same order every time; empty
// when the folder cannot be read. Links and badly named folders are left out the same way.
std::vector<std::filesystem::path> listSubfolders(const std::filesystem::path& folder,
                                                  const WalkSkipNote& onSkip = {});

} // namespace corvandell
