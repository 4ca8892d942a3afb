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

// The largest store files read: no real manifest, settings file or receipt (decompressed)
// comes near 16 MB, and Battle.net's product.db, which lists every install with its
// settings, near 64 MB. Anything larger is damaged or hostile, and reading it would only
// cost memory.
inline constexpr std::size_t kMaxStoreFileBytes = std::size_t{16} << 20;
inline constexpr std::size_t kMaxProductDbBytes = std::size_t{64} << 20;

// The file's bytes; nothing when it cannot be read, is not a regular file or is larger
// than maxBytes.
std::optional<std::string> readStoreFile(const std::filesystem::path& file,
                                         std::size_t maxBytes = kMaxStoreFileBytes);

// Why readStoreFile (or, with asText, readStoreText) gave nothing, for the scan report:
// "<name> is larger than 16 MB", "<name> is not UTF-8 or UTF-16 text" or "<name> could
// not be read".
std::string storeFileProblem(const std::filesystem::path& file, std::size_t maxBytes = kMaxStoreFileBytes,
                             bool asText = true);

// "16 MB" for a whole number of megabytes.
std::string megabytesText(std::size_t bytes);

// The bytes as UTF-8: a UTF-8 byte order mark is dropped, UTF-16 (either byte order, with a
// mark, or little-endian recognised by its zero high bytes) is converted; bad UTF-16 units
// become U+FFFD.
std::string decodeStoreText(std::string_view bytes);

// readStoreFile followed by decodeStoreText; nothing when the text is not valid UTF-8
// either, since every name and folder in it would be suspect.
std::optional<std::string> readStoreText(const std::filesystem::path& file);

// Well-formed UTF-8: no stray or missing continuation bytes, overlong forms, surrogates or
// code points past U+10FFFF.
bool isValidUtf8(std::string_view text);

// The text with every byte that is not part of well-formed UTF-8 replaced by U+FFFD.
std::string validUtf8(std::string_view text);

// A folder named in a store's record: trimmed of blanks and quotes, without a "\\?\" prefix
// or trailing separators, with either separator accepted. Empty text gives an empty path.
// Text that is not UTF-8 has its bad bytes replaced rather than failing the conversion.
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

// The path as UTF-8 for rows and reports. Never throws: an unpaired surrogate (Windows) or
// a byte that is not UTF-8 (elsewhere) in a name becomes U+FFFD; on Windows the standard
// conversion would throw and end the whole scan.
std::string utf8Text(const std::filesystem::path& path);

// Appends one Unicode code point as UTF-8.
void appendUtf8CodePoint(std::string& out, std::uint32_t codePoint);

} // namespace corvandell
