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

namespace corvandell {

namespace {

std::string randomSuffix() {
    static constexpr char kHexDigits[] = "0123456789abcdef";
    std::random_device device;
    std::uint64_t bits = (static_cast<std::uint64_t>(device()) << 32) ^ device();
    std::string suffix(16, '0');
    for (char& digit : suffix) {
        digit = kHexDigits[bits & 0x0F];
        bits >>= 4;
    }
    return suffix;
}

std::filesystem::path temporaryBeside(const std::filesystem::path& target) {
    const std::string name = "." + pathToUtf8(target.filename()) + ".tmp-" + randomSuffix();
    return target.parent_path() / pathFromUtf8(name);
}

[[noreturn]] void failSave(const std::filesystem::path& temporary, const std::filesystem::path& target) {
    std::error_code ignored;
    std::filesystem::remove(temporary, ignored);
    throw std::runtime_error("Could not save " + pathToUtf8(target.filename()));
}

} // namespace

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
