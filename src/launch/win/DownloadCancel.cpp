#include "launch/win/DownloadCancel.hpp"

#include <algorithm>
#include <stdexcept>

namespace corvandell::win {

void DownloadCancel::throwIfCancelled() const {
    if (isCancelled()) {
        throw std::runtime_error("The client is closing.");
    }
}

void CancellableClock::sleepMs(std::uint64_t ms) {
    // INFINITE is a DWORD too; a cap never asks for anything near 49 days at once.
    const DWORD wait = static_cast<DWORD>(std::min<std::uint64_t>(ms, INFINITE - 1));
    if (cancel_.waitFor(wait)) {
        cancel_.throwIfCancelled();
    }
}

} // namespace corvandell::win
