#include "webgames/git/PackSource.hpp"

#include <algorithm>
#include <system_error>

namespace corvandell::git {

namespace {

constexpr std::size_t kReadAheadBytes = std::size_t{1} << 20;

} // namespace

PackFile::PackFile(const std::filesystem::path& path) : file_(path, std::ios::binary) {
    std::error_code error;
    const auto bytes = std::filesystem::file_size(path, error);
    if (file_.is_open() && !error) {
        size_ = static_cast<std::size_t>(bytes);
    }
}

std::string_view PackFile::read(std::size_t offset, std::size_t length) {
    if (offset >= size_) {
        return {};
    }
    const std::size_t end = offset + std::min(length, size_ - offset);
    if (offset >= bufferStart_ && end <= bufferStart_ + buffer_.size()) {
        return std::string_view(buffer_).substr(offset - bufferStart_);
    }
    const std::size_t count = std::min(size_ - offset, std::max(length, kReadAheadBytes));
    if (buffer_.capacity() > 2 * std::max(count, kReadAheadBytes)) {
        std::string().swap(buffer_); // one large entry read must not keep its buffer for good
    }
    buffer_.resize(count);
    bufferStart_ = offset;
    file_.clear();
    file_.seekg(static_cast<std::streamoff>(offset));
    file_.read(buffer_.data(), static_cast<std::streamsize>(count));
    buffer_.resize(file_ ? count : static_cast<std::size_t>(std::max<std::streamsize>(file_.gcount(), 0)));
    return buffer_;
}

} // namespace corvandell::git
