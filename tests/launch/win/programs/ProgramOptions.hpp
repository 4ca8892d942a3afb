// The arguments of a stand-in program: its command line, then the words of a file beside it
// named like it with ".options" ("Game.exe" reads "Game.options"). The client starts games
// with nothing but their quoted path, so a test that copies a program into a game folder
// says how it behaves in that file.
#pragma once

#include <windows.h>

#include <shellapi.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace corvandell::test {

inline std::vector<std::wstring> wordsOf(const std::wstring& commandLine) {
    std::vector<std::wstring> words;
    int count = 0;
    wchar_t** split = CommandLineToArgvW((L"x " + commandLine).c_str(), &count);
    for (int i = 1; split != nullptr && i < count; ++i) {
        words.emplace_back(split[i]);
    }
    LocalFree(split);
    return words;
}

inline std::wstring ownPath() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

inline std::vector<std::wstring> programOptions() {
    int count = 0;
    wchar_t** split = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::wstring> words;
    for (int i = 1; split != nullptr && i < count; ++i) {
        words.emplace_back(split[i]);
    }
    LocalFree(split);
    std::wstring optionsFile = ownPath();
    optionsFile = optionsFile.substr(0, optionsFile.rfind(L'.')) + L".options";
    std::ifstream file{std::filesystem::path(optionsFile)};
    std::stringstream text;
    text << file.rdbuf();
    const std::string bytes = text.str(); // ASCII: file names and switches only
    for (std::wstring& word : wordsOf(std::wstring(bytes.begin(), bytes.end()))) {
        words.push_back(std::move(word));
    }
    return words;
}

} // namespace corvandell::test
