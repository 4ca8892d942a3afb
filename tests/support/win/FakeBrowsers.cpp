#include "support/win/FakeBrowsers.hpp"

#include "support/win/ChildProcess.hpp"

#include <fstream>
#include <sstream>

namespace corvandell::test {
namespace {

void deleteTree(HKEY root, const std::wstring& path) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_ALL_ACCESS, &key) == ERROR_SUCCESS) {
        RegDeleteTreeW(key, nullptr);
        RegCloseKey(key);
        RegDeleteKeyW(root, path.c_str());
    }
}

std::wstring fromUtf8(const std::string& text) {
    const int size = MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    std::wstring out(static_cast<size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), out.data(), size);
    return out;
}

} // namespace

std::filesystem::path placeFakeBrowser(const std::filesystem::path& folder, const std::wstring& fileName,
                                       const std::string& options) {
    std::filesystem::create_directories(folder);
    const std::filesystem::path target = folder / fileName;
    std::filesystem::copy_file(siblingExecutable(L"corvandell-fake-browser.exe"), target,
                               std::filesystem::copy_options::overwrite_existing);
    std::ofstream(std::filesystem::path(target).replace_extension(L".options"), std::ios::binary) << options;
    return target;
}

std::optional<BrowserStart> recordedStart(const std::filesystem::path& browser) {
    std::ifstream in(std::filesystem::path(browser).replace_extension(L".command-line"), std::ios::binary);
    if (!in) {
        return std::nullopt;
    }
    std::stringstream text;
    text << in.rdbuf();
    const std::string whole = text.str();
    const size_t lineEnd = whole.find('\n');
    if (lineEnd == std::string::npos) {
        return std::nullopt;
    }
    return BrowserStart{fromUtf8(whole.substr(0, lineEnd)), fromUtf8(whole.substr(lineEnd + 1))};
}

BrowserRegistrations::BrowserRegistrations() {
    for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        for (const wchar_t* file : {L"msedge.exe", L"chrome.exe"}) {
            deleteTree(root, std::wstring(kAppPaths) + L"\\" + file);
        }
    }
}

BrowserRegistrations::~BrowserRegistrations() {
    for (const auto& [root, path] : added_) {
        deleteTree(root, path);
    }
}

void BrowserRegistrations::addBrowser(HKEY root, const std::wstring& subkey, const std::wstring& name,
                                      const std::wstring& command) {
    const std::wstring key = std::wstring(kStartMenuInternet) + L"\\" + subkey;
    added_.emplace_back(root, key);
    setDefault(root, key, name);
    setDefault(root, key + L"\\shell\\open\\command", command);
}

void BrowserRegistrations::addAppPath(HKEY root, const std::wstring& fileName,
                                      const std::filesystem::path& path) {
    const std::wstring key = std::wstring(kAppPaths) + L"\\" + fileName;
    added_.emplace_back(root, key);
    setDefault(root, key, path.wstring());
}

void BrowserRegistrations::setDefault(HKEY root, const std::wstring& key, const std::wstring& value) {
    RegSetKeyValueW(root, key.c_str(), nullptr, REG_SZ, value.c_str(),
                    static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
}

} // namespace corvandell::test
