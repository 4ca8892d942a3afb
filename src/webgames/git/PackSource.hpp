// Where a pack's bytes come from: memory the caller holds, or a file read at positions.
//
// The indexed decode reads each entry once to index it and again whenever an object is
// wanted, so it never needs the whole pack at once; a pack kept in a file then costs a
// read buffer instead of its full size.
#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace corvandell::git {

class PackBytes {
public:
    virtual ~PackBytes() = default;
    virtual std::size_t size() const = 0;
    // At least `length` bytes from `offset`, or all there are when the pack ends sooner (or
    // cannot be read further); the view may hold more and is valid until the next call.
    virtual std::string_view read(std::size_t offset, std::size_t length) = 0;
};

class PackInMemory final : public PackBytes {
public:
    explicit PackInMemory(std::string_view bytes) : bytes_(bytes) {}
    std::size_t size() const override { return bytes_.size(); }
    // The whole rest, which costs nothing.
    std::string_view read(std::size_t offset, std::size_t) override {
        return offset < bytes_.size() ? bytes_.substr(offset) : std::string_view{};
    }

private:
    std::string_view bytes_;
};

// Reads ahead a megabyte at a time, so the sequential first pass costs few reads; the
// buffer grows to the largest single read asked for.
class PackFile final : public PackBytes {
public:
    // A file that cannot be opened reads as an empty pack, which the decoder refuses.
    explicit PackFile(const std::filesystem::path& path);
    std::size_t size() const override { return size_; }
    std::string_view read(std::size_t offset, std::size_t length) override;

private:
    std::ifstream file_;
    std::size_t size_ = 0;
    std::string buffer_;
    std::size_t bufferStart_ = 0;
};

} // namespace corvandell::git
