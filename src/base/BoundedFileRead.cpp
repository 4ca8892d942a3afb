// The file's type is asked before it is opened: opening a FIFO would block, and on Linux a
// folder opens fine and only fails on the first read. The size from the directory entry
// is only a first refusal; the read itself stops one byte past the cap, so a file that
// grows meanwhile cannot make us hold more.
//
// Missing is decided from the link itself (symlink_status), so a link whose target is on
// a drive that is not mounted counts as unreadable, not as a fresh start.
#include "base/BoundedFileRead.hpp"

#include <array>
#include <fstream>
#include <system_error>

namespace corvandell {

namespace {

constexpr std::size_t kReadChunkBytes = 64 * 1024;

bool isMissing(const std::filesystem::path& file) {
    std::error_code error;
    const auto status = std::filesystem::symlink_status(file, error);
    return status.type() == std::filesystem::file_type::not_found;
}

FileRead failed(FileReadStatus status) {
    return FileRead{status, {}};
}

} // namespace

FileRead readFileBounded(const std::filesystem::path& file, std::size_t maxBytes) {
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    if (status.type() == std::filesystem::file_type::not_found) {
        return failed(isMissing(file) ? FileReadStatus::Missing : FileReadStatus::Unreadable);
    }
    if (error || status.type() != std::filesystem::file_type::regular) {
        return failed(FileReadStatus::Unreadable);
    }
    if (const auto size = std::filesystem::file_size(file, error); !error && size > maxBytes) {
        return failed(FileReadStatus::TooLarge);
    }

    std::ifstream in(file, std::ios::binary);
    if (!in.is_open()) {
        // Removed between the two looks: as good as never there.
        return failed(isMissing(file) ? FileReadStatus::Missing : FileReadStatus::Unreadable);
    }
    FileRead read{FileReadStatus::Ok, {}};
    std::array<char, kReadChunkBytes> chunk{};
    for (;;) {
        // Asking for one byte more than is left is how an over-long file shows itself.
        const std::size_t left = maxBytes - read.bytes.size();
        const std::size_t wanted = left >= chunk.size() ? chunk.size() : left + 1;
        in.read(chunk.data(), static_cast<std::streamsize>(wanted));
        const auto got = static_cast<std::size_t>(in.gcount());
        if (got == 0) {
            break;
        }
        if (got > left) {
            return failed(FileReadStatus::TooLarge);
        }
        read.bytes.append(chunk.data(), got);
    }
    if (in.bad()) {
        return failed(FileReadStatus::Unreadable);
    }
    return read;
}

} // namespace corvandell
