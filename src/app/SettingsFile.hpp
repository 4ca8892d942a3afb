// settings.json: loading, saving and its exact text layout, which is the file format.
#pragma once

#include "app/DataPaths.hpp"
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

// Never fails on a bad file; always saves the result back so the file is complete.
Settings loadSettings(const DataPaths& paths);

// Replaces settings.json atomically; throws std::runtime_error or filesystem_error.
void saveSettings(const std::filesystem::path& dataFolder, const Settings& settings);

} // namespace corvandell
