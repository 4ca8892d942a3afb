// Reading the stores' own files and the paths written in them.
//
// Store files come in UTF-8 with or without a byte order mark and in UTF-16, and name
// folders with forward slashes, doubled or trailing separators, surrounding quotes or a
// "\\?\" prefix. Every scanner goes through these helpers so they all agree on what a
// folder is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace corvandell {

// Files larger than this are not store records; reading them would only waste memory.
inline constexpr std::size_t kMaxStoreFileBytes = 32u * 1024 * 1024;

// The file's bytes; nothing when it cannot be read, is not a regular file or is too large.
std::optional<std::string> readStoreFile(const std::filesystem::path& file);

// The bytes as UTF-8: a UTF-8 byte order mark is dropped, UTF-16 (either byte order, with a
// mark, or little-endian recognised by its zero high bytes) is converted; bad UTF-16 units
// become U+FFFD.
std::string decodeStoreText(std::string_view bytes);

// readStoreFile followed by decodeStoreText.
std::optional<std::string> readStoreText(const std::filesystem::path& file);

// A folder named in a store's record: trimmed of blanks and quotes, without a "\\?\" prefix
// or trailing separators, with either separator accepted. Empty text gives an empty path.
std::filesystem::path storePath(std::string_view utf8);

// Whether two folders are the same, ignoring separator style, trailing separators and
// ASCII case (Windows folder names are case-insensitive).
bool isSameFolder(const std::filesystem::path& a, const std::filesystem::path& b);

// A directory that exists; false on any error.
bool isExistingFolder(const std::filesystem::path& folder);

// Why a folder a store recorded cannot be a game's install folder ("no install folder is
// recorded", "the install folder no longer exists"); nothing when it can.
std::optional<std::string> installFolderProblem(const std::filesystem::path& folder);

// A regular file that exists; false on any error.
bool isExistingFile(const std::filesystem::path& file);

// The file a store record names relative to the folder ("Binaries/Game.exe", leading
// separators ignored), when it exists; empty otherwise.
std::filesystem::path existingFileUnder(const std::filesystem::path& folder, std::string_view relative);

std::string utf8Text(const std::filesystem::path& path);

// Appends one Unicode code point as UTF-8.
void appendUtf8CodePoint(std::string& out, std::uint32_t codePoint);

} // namespace corvandell
