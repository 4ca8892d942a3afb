// The icon job: one small icon per row that has one, loaded on a worker thread.
//
// A row with an executable gets the file's own first small icon, else the shell's icon for
// the file. A browser game gets its site's icon: a cloned game's from its clone, a hosted
// game's fetched from its site into the data folder's "iconcache" (kept, so a site is asked
// once). Rows without an icon are left out of the batch; the list draws a badge for them.
#pragma once

#include <windows.h>

#include "app/LibraryItem.hpp"
#include "base/win/UniqueHandle.hpp"

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace corvandell::win {

struct IconBatch {
    std::vector<std::pair<std::string, UniqueIcon>> icons; // row key, 16-pixel icon
    std::string errorText;
};

// What the job needs of one row, copied on the UI thread.
struct IconRequest {
    std::string key;
    std::filesystem::path executable;  // a row installed with an executable
    std::filesystem::path cloneFolder; // a cloned browser game...
    std::string launchPath;            // ...and its launch file inside the clone
    std::string siteAddress;           // a hosted browser game
};

// The requests for rows that have no icon in `cached` yet.
std::vector<IconRequest> iconRequestsFor(const std::vector<LibraryItem>& rows,
                                         const std::map<std::string, UniqueIcon>& cached);

IconBatch loadRowIconBatch(const std::vector<IconRequest>& requests,
                           const std::filesystem::path& iconCache) noexcept;

// A 16-pixel icon from an image file (.ico, .png, .gif, .jpg, .bmp); null when it is none.
UniqueIcon loadSmallIconFromFile(const std::filesystem::path& file);

} // namespace corvandell::win
