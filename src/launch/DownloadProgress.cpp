#include "launch/DownloadProgress.hpp"

namespace corvandell {

int downloadPercent(std::uint64_t received, std::uint64_t total) {
    if (total == 0) {
        return 0;
    }
    return static_cast<int>(received * 100 / total);
}

std::wstring progressText(const DownloadProgress& progress) {
    return progress.phase + L" " + std::to_wstring(progress.percent) + L"%";
}

} // namespace corvandell
