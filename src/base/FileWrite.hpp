// Writing a whole file with the fewest calls the platform allows.
//
// Checking out a game writes thousands of small files, and under a compatibility layer
// each call into the file system is a round trip to another process: one create, the
// writes, one close, and no stream layer asking the file's type or seeking on the way.
#pragma once

#include <filesystem>
#include <string_view>

namespace corvandell {

// Creates the file, or empties an existing one, and writes the bytes; its folder must
// exist. Returns false on any failure, leaving whatever was written.
bool writeWholeFile(const std::filesystem::path& path, std::string_view bytes);

} // namespace corvandell
