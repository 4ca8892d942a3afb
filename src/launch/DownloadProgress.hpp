// What a running install reports to the window, and the status text it becomes.
#pragma once

#include <cstdint>
#include <string>

namespace corvandell {

struct DownloadProgress {
    std::string titleId;        // which install this is, when several run
    std::uint64_t received = 0; // bytes of the current file so far
    std::uint64_t total = 0;    // the current file's Content-Length; 0 when not sent
    int percent = 0;            // received * 100 / total in whole numbers; 0 when unknown
    std::wstring phase;         // L"Downloading" while data arrives, L"Installed" at the end
};

// received * 100 / total, truncated; 0 when the total is unknown.
int downloadPercent(std::uint64_t received, std::uint64_t total);

// The status line: phase, a blank, the percent and "%" ("Downloading 42%").
std::wstring progressText(const DownloadProgress& progress);

} // namespace corvandell
