// corvandell-scan: runs exactly the client's store scan on this machine and prints every
// game it found, for developers and for support ("why is my game not in the library?").
// With --why it also lists each entry a scanner looked at and left out, with the reason.
// Output is UTF-8, one block per game, so titles and folders in any language survive.
#include <windows.h>

#include <cstdio>
#include <string>

#include "base/win/WideText.hpp"
#include "stores/StoreFiles.hpp"
#include "stores/StoreLaunch.hpp"
#include "stores/StoreScanners.hpp"
#include "stores/win/WindowsStoreHost.hpp"

namespace {

constexpr char kUsage[] = "usage: corvandell-scan [--why]\n"
                          "  Lists the games the client finds installed by Steam and the other stores.\n"
                          "  --why  also lists every entry that was left out, with the reason\n";

void printLine(const std::string& text) {
    std::fputs(text.c_str(), stdout);
    std::fputc('\n', stdout);
}

std::string orNone(std::string text) {
    return text.empty() ? "(none)" : text;
}

void printGame(const corvandell::DetectedGame& game) {
    using corvandell::utf8Text;
    printLine(game.storeName + ": " + game.title);
    printLine("  id:          " + game.key);
    printLine("  folder:      " + orNone(utf8Text(game.installFolder)));
    printLine("  executable:  " + orNone(utf8Text(game.executable)));
    printLine("  launch:      " + orNone(game.launchAddress));
    const corvandell::LaunchKind kind = corvandell::launchOf(game).kind;
    printLine(std::string("  starts:      ") +
              (kind == corvandell::LaunchKind::StoreCommand ? "through the store"
               : kind == corvandell::LaunchKind::Executable ? "the executable"
                                                            : "(nothing)"));
    printLine("");
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    bool why = false;
    for (int i = 1; i < argc; ++i) {
        if (corvandell::win::narrow(argv[i]) != "--why") {
            std::fputs(kUsage, stderr);
            return 2;
        }
        why = true;
    }
    // A console shows the UTF-8 as text; a pipe gets the bytes unchanged either way.
    SetConsoleOutputCP(CP_UTF8);

    const corvandell::win::WindowsStoreHost machine;
    const corvandell::ScanReport report = corvandell::scanAllStores(machine.host());
    for (const auto& game : report.games) {
        printGame(game);
    }
    printLine(std::to_string(report.games.size()) +
              (report.games.size() == 1 ? " game found." : " games found."));
    if (why) {
        printLine("");
        printLine("Left out (" + std::to_string(report.skipped.size()) + "):");
        for (const auto& skipped : report.skipped) {
            printLine("  " + skipped.storeName + ": " + skipped.entry + " - " + skipped.reason);
        }
    }
    std::fflush(stdout);
    return 0;
}
