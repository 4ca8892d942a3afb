#include "support/win/TestGames.hpp"

#include <tlhelp32.h>

#include "base/win/UniqueHandle.hpp"
#include "launch/ProcessImage.hpp"
#include "launch/win/ProcessSearch.hpp"
#include "support/win/ChildProcess.hpp"

#include <fstream>
#include <utility>

namespace corvandell::test {
namespace {

std::filesystem::path placeProgram(const wchar_t* program, const std::filesystem::path& folder,
                                   const std::wstring& fileName, const std::string& options) {
    std::filesystem::create_directories(folder);
    const std::filesystem::path target = folder / fileName;
    std::filesystem::copy_file(siblingExecutable(program), target,
                               std::filesystem::copy_options::overwrite_existing);
    std::ofstream(std::filesystem::path(target).replace_extension(L".options"), std::ios::binary) << options;
    return target;
}

} // namespace

std::filesystem::path placeTestGame(const std::filesystem::path& folder, const std::wstring& fileName,
                                    const std::string& options) {
    return placeProgram(L"corvandell-test-game.exe", folder, fileName, options);
}

std::filesystem::path placeTestLauncher(const std::filesystem::path& folder, const std::wstring& fileName,
                                        const std::string& options) {
    return placeProgram(L"corvandell-test-launcher.exe", folder, fileName, options);
}

std::vector<DWORD> processesUnder(const std::filesystem::path& folder) {
    std::vector<DWORD> found;
    const win::UniqueKernelHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Process32FirstW(snapshot.get(), &entry); snapshot && more;
         more = Process32NextW(snapshot.get(), &entry)) {
        const win::UniqueKernelHandle process(
            OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION | SYNCHRONIZE, FALSE, entry.th32ProcessID));
        if (process && WaitForSingleObject(process.get(), 0) == WAIT_TIMEOUT &&
            isImageUnderFolder(win::processImagePath(process.get()), folder.wstring())) {
            found.push_back(entry.th32ProcessID);
        }
    }
    return found;
}

void endProcessesUnder(const std::filesystem::path& folder) {
    for (const DWORD id : processesUnder(folder)) {
        const win::UniqueKernelHandle process(OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id));
        if (process) {
            TerminateProcess(process.get(), 9);
            WaitForSingleObject(process.get(), 5000);
        }
    }
}

HWND testGameWindowOf(DWORD processId) {
    std::pair<DWORD, HWND> search{processId, nullptr};
    EnumWindows(
        [](HWND window, LPARAM parameter) -> BOOL {
            auto& [wanted, found] = *reinterpret_cast<std::pair<DWORD, HWND>*>(parameter);
            DWORD owner = 0;
            GetWindowThreadProcessId(window, &owner);
            wchar_t title[64] = {};
            GetWindowTextW(window, title, 64);
            if (owner == wanted && IsWindowVisible(window) &&
                std::wstring(title) == L"Corvandell Test Game") {
                found = window;
                return FALSE;
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.second;
}

} // namespace corvandell::test
