#include <windows.h>

#include <objbase.h>
#include <shellapi.h>

#include "app/SiteIconLinks.hpp"
#include "app/win/RowIcons.hpp"
#include "app/win/SiteIconFetch.hpp"
#include "base/BoundedFileRead.hpp"
#include "base/Utf8Path.hpp"

#include <fstream>

namespace corvandell::win {
namespace {

constexpr int kIconSide = 16;
constexpr std::size_t kMaxPageBytes = 512 * 1024;
constexpr std::size_t kMaxIconBytes = 256 * 1024;

// Shell calls need COM on the calling thread, apartment-threaded as the shell expects; a
// thread that already has COM in another model keeps it (and the shell still works there).
class ComApartment {
public:
    ComApartment() noexcept : isOwned_(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {}
    ~ComApartment() {
        if (isOwned_) {
            CoUninitialize();
        }
    }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;

private:
    bool isOwned_;
};

UniqueIcon executableIcon(const std::filesystem::path& executable) {
    HICON small = nullptr;
    if (ExtractIconExW(executable.c_str(), 0, nullptr, &small, 1) > 0 && small != nullptr) {
        return UniqueIcon(small);
    }
    SHFILEINFOW info{};
    if (SHGetFileInfoW(executable.c_str(), 0, &info, sizeof(info), SHGFI_ICON | SHGFI_SMALLICON) != 0) {
        return UniqueIcon(info.hIcon);
    }
    return UniqueIcon();
}

UniqueIcon clonedGameIcon(const IconRequest& request) {
    const FileRead page =
        readFileBounded(request.cloneFolder / pathFromUtf8(request.launchPath), kMaxPageBytes);
    for (const std::string& relative : localIconCandidates(page.bytes, request.launchPath)) {
        if (UniqueIcon icon = loadSmallIconFromFile(request.cloneFolder / pathFromUtf8(relative))) {
            return icon;
        }
    }
    return UniqueIcon();
}

bool writeCacheFile(const std::filesystem::path& file, const std::string& bytes) {
    std::error_code error;
    std::filesystem::create_directories(file.parent_path(), error);
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    return static_cast<bool>(out.write(bytes.data(), static_cast<std::streamsize>(bytes.size())));
}

// The icon kept from an earlier fetch, else the page's icons fetched in order of
// preference; the first one that decodes is kept in the cache.
UniqueIcon hostedGameIcon(const IconRequest& request, const std::filesystem::path& iconCache) {
    const std::filesystem::path cached = iconCache / pathFromUtf8(iconCacheFileName(request.key) + ".img");
    if (UniqueIcon icon = loadSmallIconFromFile(cached)) {
        return icon;
    }
    const auto page = fetchSmallFile(request.siteAddress, kMaxPageBytes);
    for (const std::string& address : iconCandidates(page ? *page : std::string(), request.siteAddress)) {
        const auto bytes = fetchSmallFile(address, kMaxIconBytes);
        if (!bytes || bytes->find("<svg") != std::string::npos || !writeCacheFile(cached, *bytes)) {
            continue;
        }
        if (UniqueIcon icon = loadSmallIconFromFile(cached)) {
            return icon;
        }
    }
    std::error_code ignored;
    std::filesystem::remove(cached, ignored);
    return UniqueIcon();
}

} // namespace

std::vector<IconRequest> iconRequestsFor(const std::vector<LibraryItem>& rows,
                                         const std::map<std::string, UniqueIcon>& cached) {
    std::vector<IconRequest> requests;
    for (const LibraryItem& row : rows) {
        if (cached.contains(row.key)) {
            continue;
        }
        IconRequest request;
        request.key = row.key;
        if (row.isBrowserGame() && row.browserGame->launchTarget.starts_with("https://")) {
            request.siteAddress = row.browserGame->launchTarget;
        } else if (row.isBrowserGame() && row.isInstalled()) {
            request.cloneFolder = pathFromUtf8(row.install->installPath);
            request.launchPath = row.browserGame->launchTarget;
        } else if (!row.isBrowserGame() && row.isInstalled() && !row.install->executablePath.empty()) {
            request.executable = pathFromUtf8(row.install->executablePath);
        } else {
            continue;
        }
        requests.push_back(std::move(request));
    }
    return requests;
}

IconBatch loadRowIconBatch(const std::vector<IconRequest>& requests,
                           const std::filesystem::path& iconCache) noexcept {
    IconBatch batch;
    try {
        const ComApartment com;
        for (const IconRequest& request : requests) {
            UniqueIcon icon;
            if (!request.executable.empty()) {
                icon = executableIcon(request.executable);
            } else if (!request.cloneFolder.empty()) {
                icon = clonedGameIcon(request);
            } else if (!request.siteAddress.empty()) {
                icon = hostedGameIcon(request, iconCache);
            }
            if (icon) {
                batch.icons.emplace_back(request.key, std::move(icon));
            }
        }
    } catch (const std::exception& error) {
        // The icons found so far still go to the window.
        batch.errorText = error.what();
    } catch (...) {
        batch.errorText = "unexpected error";
    }
    return batch;
}

} // namespace corvandell::win
