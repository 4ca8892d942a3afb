#include "base/FileWrite.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace corvandell {

bool writeWholeFile(const std::filesystem::path& path, std::string_view bytes) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (file < 0) {
        return false;
    }
    bool isWritten = true;
    while (!bytes.empty()) {
        const ssize_t count = ::write(file, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            isWritten = false;
            break;
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return ::close(file) == 0 && isWritten;
}

} // namespace corvandell
