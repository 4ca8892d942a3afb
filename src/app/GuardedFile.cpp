// The damaged original is kept from the bytes read at load, not copied from the disk at
// save time: those bytes are exactly what the client found, and writing them through
// replaceFileAtomically makes the copy durable before the rename that replaces the file.
// A plain copy could still sit in the disk cache when a power cut hits after the swap.
#include "app/GuardedFile.hpp"

#include "api/JsonWellFormed.hpp"
#include "base/BoundedFileRead.hpp"
#include "base/FileCommit.hpp"
#include "base/Utf8Path.hpp"

#include <stdexcept>
#include <system_error>

namespace corvandell {

namespace {

// Far more copies in one second than the client ever makes; a bound keeps a folder full
// of look-alike names from turning the search into a long loop.
constexpr int kMaxCopiesPerSecond = 1000;

std::string twoDigits(unsigned value) {
    return std::string(1, static_cast<char>('0' + value / 10 % 10)) + static_cast<char>('0' + value % 10);
}

bool isFree(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::symlink_status(path, error).type() == std::filesystem::file_type::not_found;
}

} // namespace

std::string damagedCopyName(std::string_view fileName, std::chrono::system_clock::time_point when,
                            int sequence) {
    using namespace std::chrono;
    const auto second = floor<seconds>(when);
    const auto day = floor<days>(second);
    const year_month_day date(day);
    const hh_mm_ss time(second - day);
    std::string name(fileName);
    name += ".bad-" + std::to_string(static_cast<int>(date.year()));
    name += twoDigits(static_cast<unsigned>(date.month())) + twoDigits(static_cast<unsigned>(date.day()));
    name += "T" + twoDigits(static_cast<unsigned>(time.hours().count()));
    name += twoDigits(static_cast<unsigned>(time.minutes().count()));
    name += twoDigits(static_cast<unsigned>(time.seconds().count())) + "Z";
    if (sequence > 1) {
        name += "-" + std::to_string(sequence);
    }
    return name;
}

std::string GuardedFile::load() {
    removeLeftoverTemporaries(file_);
    FileRead read = readFileBounded(file_, maxBytes_);
    switch (read.status) {
    case FileReadStatus::Missing:
        condition_ = FileCondition::Missing;
        return {};
    case FileReadStatus::Unreadable:
    case FileReadStatus::TooLarge:
        condition_ = FileCondition::Unreadable;
        return {};
    case FileReadStatus::Ok:
        break;
    }
    const JsonShape shape = checkJsonWellFormed(read.bytes).shape;
    condition_ = shape == JsonShape::WellFormed || shape == JsonShape::Empty ? FileCondition::Whole
                                                                             : FileCondition::Damaged;
    if (condition_ == FileCondition::Damaged) {
        damagedOriginal_ = read.bytes;
    }
    return std::move(read.bytes);
}

bool GuardedFile::save(std::string_view bytes, std::chrono::system_clock::time_point now) {
    if (condition_ == FileCondition::Unreadable) {
        return false;
    }
    if (!file_.parent_path().empty()) {
        std::filesystem::create_directories(file_.parent_path());
    }
    if (condition_ == FileCondition::Damaged) {
        keepDamagedOriginal(now);
    }
    replaceFileAtomically(file_, bytes);
    return true;
}

void GuardedFile::keepDamagedOriginal(std::chrono::system_clock::time_point now) {
    const std::string fileName = pathToUtf8(file_.filename());
    for (int sequence = 1; sequence <= kMaxCopiesPerSecond; ++sequence) {
        const std::filesystem::path copy =
            file_.parent_path() / pathFromUtf8(damagedCopyName(fileName, now, sequence));
        if (!isFree(copy)) {
            continue;
        }
        replaceFileAtomically(copy, damagedOriginal_);
        keptOriginal_ = copy;
        damagedOriginal_ = std::string();
        condition_ = FileCondition::Whole;
        return;
    }
    throw std::runtime_error("Could not keep the damaged " + fileName);
}

} // namespace corvandell
