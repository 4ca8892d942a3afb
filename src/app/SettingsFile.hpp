// settings.json: loading, saving and its exact text layout, which is the file format.
#pragma once

#include "app/DataPaths.hpp"
#include "app/GuardedFile.hpp"
#include "base/Settings.hpp"

#include <filesystem>
#include <map>
#include <string>
#include <string_view>

namespace corvandell {

// A fresh record: every default of the table, libraryPath the given games folder.
Settings defaultSettings(const std::filesystem::path& defaultLibraryFolder);

// The exact bytes of settings.json.
std::string formatSettings(const Settings& settings);

// Reads every key over the defaults; a damaged text keeps whatever the scanners find.
Settings parseSettings(const std::string& text, const std::filesystem::path& defaultLibraryFolder);

// Far above anything the writer produces (tokens, a path, a few browser choices).
inline constexpr std::size_t kMaxSettingsBytes = 1024 * 1024;

// settings.json in the data folder, not yet read.
GuardedFile settingsFileIn(const std::filesystem::path& dataFolder);

// Never fails on a bad file, and saves the result straight back so a partial file is
// rewritten complete, unless the file could not be read (see GuardedFile). Throws only
// when that save fails.
Settings loadSettings(GuardedFile& file, const std::filesystem::path& defaultLibraryFolder);

// Replaces settings.json atomically through its guard; false when the guard withheld the
// write. Throws std::runtime_error or filesystem_error when writing fails.
bool saveSettings(GuardedFile& file, const Settings& settings);

} // namespace corvandell
