// One file of a build, fetched over HTTP(S) into a file on disk.
#pragma once

#include "launch/DownloadProgress.hpp"
#include "launch/DownloadRateCap.hpp"
#include "launch/win/DownloadCancel.hpp"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

namespace corvandell::win {

using DownloadProgressSink = std::function<void(const DownloadProgress&)>;

struct FileDownload {
    std::string url;            // the signed address, UTF-8
    std::string label;          // the asset's name, for messages
    std::filesystem::path file; // written from scratch (truncated if present)
    int limitKbps = 0;          // 0 or less: no cap
    std::string titleId;        // passed through to the progress records
};

// Downloads into `file`, reporting each chunk ("Downloading", percent of the declared
// length) and pacing itself by the cap. Returns the bytes written. Throws
// std::runtime_error with the reason: "Invalid URL", "HTTP request failed", a refused
// status, a read that fails, fewer bytes than the Content-Length, a file that cannot be
// written, or a cancel. What was written stays in `file` for the caller to remove.
std::uint64_t downloadFile(const FileDownload& download, const DownloadProgressSink& progress,
                           DownloadClock& clock, const DownloadCancel& cancel);

} // namespace corvandell::win
