#include "support/win/LinuxSide.hpp"

#include <windows.h>

#include "base/win/UniqueHandle.hpp"
#include "base/win/WideText.hpp"
#include "support/TempFolder.hpp"

#include <chrono>
#include <random>
#include <thread>

namespace corvandell::test {

namespace {

// Quoted by the Windows rules Wine splits command lines with: backslashes are literal
// unless they run into a quote.
std::wstring quotedArgument(const std::string& text) {
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : win::widen(text)) {
        if (c == L'\\') {
            ++backslashes;
        } else if (c == L'"') {
            quoted.append(backslashes + 1, L'\\');
            backslashes = 0;
        } else {
            backslashes = 0;
        }
        quoted += c;
    }
    quoted.append(backslashes, L'\\');
    return quoted + L'"';
}

} // namespace

// wine_get_unix_file_name is Wine's own export from kernel32; the buffer it returns comes
// from the process heap.
std::string linuxPathOf(const std::filesystem::path& path) {
    using UnixName = char*(__cdecl*)(const wchar_t*);
    const auto toUnix = reinterpret_cast<UnixName>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
    if (toUnix == nullptr) {
        return {};
    }
    char* name = toUnix(std::filesystem::absolute(path).c_str());
    if (name == nullptr) {
        return {};
    }
    std::string text(name);
    HeapFree(GetProcessHeap(), 0, name);
    return text;
}

// Wine hands back a process handle for a Linux program that can be neither waited on nor
// asked for an exit code, and starts no program given inherited handles. So the command
// leaves its exit status in a file, renamed into place once written, which this side
// waits for. The PATH the program inherits is the Windows one, so the command sets its own.
bool runLinuxShell(const std::string& command) {
    const auto status = std::filesystem::temp_directory_path() /
                        ("corvandell-linux-status-" + std::to_string(std::random_device()()));
    const std::string linuxStatus = linuxPathOf(status);
    if (linuxStatus.empty()) {
        return false;
    }
    std::wstring commandLine =
        L"Z:\\bin\\sh -c " +
        quotedArgument("PATH=/usr/bin:/bin; (" + command + "); echo $? >'" + linuxStatus + ".part' && mv '" +
                       linuxStatus + ".part' '" + linuxStatus + "'");
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &process)) {
        return false;
    }
    win::UniqueKernelHandle processHandle(process.hProcess);
    win::UniqueKernelHandle threadHandle(process.hThread);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!std::filesystem::exists(status) && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    const std::string exitStatus = readTestFile(status);
    std::error_code ignored;
    std::filesystem::remove(status, ignored);
    return exitStatus == "0\n";
}

} // namespace corvandell::test
