// corvandell-clone: runs exactly the client's clone from a console, for developers and for
// support ("why does this game not download?"). It prints the same progress texts the
// Add Game window shows and, on failure, the same error text, with exit code 1.
#include <windows.h>

#include <psapi.h>

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "base/Utf8Path.hpp"
#include "base/win/WideText.hpp"
#include "webgames/git/win/GitClient.hpp"

namespace {

constexpr char kUsage[] =
    "usage: corvandell-clone OWNER REPO DEST [--host URL] [--peak-memory]\n"
    "  Clones the tip of OWNER/REPO's default branch into DEST (emptied first). The pack is\n"
    "  received into DEST~pack beside it, which is removed when the clone ends.\n"
    "  --host         base address of the repository host (default " CORVANDELL_GIT_HOST_URL ")\n"
    "  --peak-memory  print the process's peak working set once the clone has ended\n";

void printLine(const std::string& text) {
    std::fputs(text.c_str(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

// As the system measured it, so a test can check that a hostile repository was refused
// before its memory was taken.
void printPeakMemory() {
    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof(counters);
    if (GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters))) {
        printLine("Peak memory: " + std::to_string(counters.PeakWorkingSetSize) + " bytes");
    }
}

int runClone(const std::string& host, const std::vector<std::string>& positional) {
    using corvandell::win::narrow;
    try {
        corvandell::win::GitClient::shallowClone(host, positional[0], positional[1],
                                                 corvandell::pathFromUtf8(positional[2]),
                                                 [](const std::wstring& text) { printLine(narrow(text)); });
        return 0;
    } catch (const std::exception& error) {
        printLine(std::string("Clone failed: ") + error.what());
        return 1;
    }
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    using corvandell::win::narrow;
    std::vector<std::string> positional;
    std::string host = corvandell::win::kDefaultGitHostUrl;
    bool isPeakMemoryWanted = false;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = narrow(argv[i]);
        if (argument == "--host" && i + 1 < argc) {
            host = narrow(argv[++i]);
        } else if (argument == "--peak-memory") {
            isPeakMemoryWanted = true;
        } else {
            positional.push_back(argument);
        }
    }
    if (positional.size() != 3) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    const int exitCode = runClone(host, positional);
    if (isPeakMemoryWanted) {
        printPeakMemory();
    }
    return exitCode;
}
