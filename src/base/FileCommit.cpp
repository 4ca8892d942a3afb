// The write-beside-then-swap replacement of our JSON files.
//
// The temporary file sits in the target's own folder so the final swap is a rename on one
// volume, which the platforms make atomic; anywhere else it would become a copy. Its name
// is random so two saves racing each other (or a leftover from a crash) never collide.
#include "base/FileCommit.hpp"

#include "base/Utf8Path.hpp"

#include <cstdint>
#include <fstream>
#include <random>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace corvandell {

namespace {

constexpr std::size_t kSuffixDigits = 16;
constexpr std::string_view kTemporaryMark = ".tmp-";

std::string randomSuffix() {
    static constexpr char kHexDigits[] = "0123456789abcdef";
    std::random_device device;
    std::uint64_t bits = (static_cast<std::uint64_t>(device()) << 32) ^ device();
    std::string suffix(kSuffixDigits, '0');
    for (char& digit : suffix) {
        digit = kHexDigits[bits & 0x0F];
        bits >>= 4;
    }
    return suffix;
}

std::string temporaryPrefix(const std::filesystem::path& target) {
    return "." + pathToUtf8(target.filename()) + std::string(kTemporaryMark);
}

std::filesystem::path temporaryBeside(const std::filesystem::path& target) {
    return target.parent_path() / pathFromUtf8(temporaryPrefix(target) + randomSuffix());
}

bool isTemporaryOf(const std::string& name, const std::string& prefix) {
    if (name.size() != prefix.size() + kSuffixDigits || !name.starts_with(prefix)) {
        return false;
    }
    return name.find_first_not_of("0123456789abcdef", prefix.size()) == std::string::npos;
}

[[noreturn]] void failSave(const std::filesystem::path& temporary, const std::filesystem::path& target) {
    std::error_code ignored;
    std::filesystem::remove(temporary, ignored);
    throw std::runtime_error("Could not save " + pathToUtf8(target.filename()));
}

} // namespace

std::size_t removeLeftoverTemporaries(const std::filesystem::path& target) {
    const std::filesystem::path folder = target.parent_path().empty() ? "." : target.parent_path();
    const std::string prefix = temporaryPrefix(target);
    std::error_code error;
    std::vector<std::filesystem::path> leftovers;
    for (std::filesystem::directory_iterator it(folder, error), end; !error && it != end;
         it.increment(error)) {
        if (it->is_regular_file(error) && !it->is_symlink(error) &&
            isTemporaryOf(pathToUtf8(it->path().filename()), prefix)) {
            leftovers.push_back(it->path());
        }
    }
    std::size_t removed = 0;
    for (const std::filesystem::path& leftover : leftovers) {
        if (std::filesystem::remove(leftover, error)) {
            ++removed;
        }
    }
    return removed;
}

void replaceFileAtomically(const std::filesystem::path& target, std::string_view bytes) {
    const std::filesystem::path temporary = temporaryBeside(target);
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        if (!out.is_open()) {
            failSave(temporary, target);
        }
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        out.close();
        if (!out) {
            failSave(temporary, target);
        }
    }
    if (!commitTemporaryFile(temporary, target)) {
        failSave(temporary, target);
    }
}

} // namespace corvandell
