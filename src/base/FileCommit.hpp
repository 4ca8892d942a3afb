// Crash-safe whole-file replacement.
//
// settings.json holds the user's tokens, so a crash or a full disk in the middle of a
// save must never leave it truncated: the new bytes go to a temporary file in the same
// folder, are flushed to the disk, and only then replace the target in one rename.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace corvandell {

// Writes the bytes beside the target and swaps them in; the old file survives any
// failure. Throws std::runtime_error naming the file.
void replaceFileAtomically(const std::filesystem::path& target, std::string_view bytes);

// Removes what an interrupted replaceFileAtomically of `target` left beside it (a crash or
// a power cut between writing the temporary and the swap): regular files named like its
// temporaries, ".settings.json.tmp-" and 16 lower-case hex digits. Returns how many went;
// anything else, and anything that cannot be removed, stays.
std::size_t removeLeftoverTemporaries(const std::filesystem::path& target);

// Platform step of replaceFileAtomically: flush `temporary` to stable storage and move it
// over `target` in one step (POSIX rename, Windows MoveFileExW). Returns false on failure.
bool commitTemporaryFile(const std::filesystem::path& temporary, const std::filesystem::path& target);

} // namespace corvandell
