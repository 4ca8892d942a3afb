// The store scan benchmark: our full Steam scan (registry, library list, every manifest,
// the executable choice in every game folder) next to `find <tree> > /dev/null` over the
// same Steam folder, which is the least any scan that visits every file can cost.
//
// Both run warm (one untimed round first) and alternate round by round, so they see the
// same cache and machine state; each figure is the best round. find runs as a child timed
// with wait4.
//
// usage: store-scan-bench <steam folder> [rounds]
#include "base/Environment.hpp"
#include "stores/SteamScanner.hpp"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

class SteamOnlyRegistry final : public corvandell::Registry {
public:
    explicit SteamOnlyRegistry(std::string root) : root_(std::move(root)) {}
    std::optional<std::string> readString(corvandell::RegistryHive hive, std::string_view keyPath,
                                          std::string_view valueName) const override {
        if (hive == corvandell::RegistryHive::CurrentUser && keyPath == "Software\\Valve\\Steam" &&
            valueName == "SteamPath") {
            return root_;
        }
        return std::nullopt;
    }
    std::vector<std::string> subkeyNames(corvandell::RegistryHive, std::string_view) const override {
        return {};
    }

private:
    std::string root_;
};

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// find with its output thrown away, as the shell's "> /dev/null" would.
double timeFind(const std::string& tree) {
    const auto start = std::chrono::steady_clock::now();
    const pid_t pid = fork();
    if (pid == 0) {
        const int devNull = open("/dev/null", O_WRONLY);
        dup2(devNull, STDOUT_FILENO);
        execlp("find", "find", tree.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    wait4(pid, &status, 0, &usage);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "find failed\n");
        std::exit(1);
    }
    return secondsSince(start);
}

std::size_t scanOnce(const corvandell::StoreHost& host, double& seconds) {
    const auto start = std::chrono::steady_clock::now();
    const auto games = corvandell::scanSteamLibrary(host);
    seconds = secondsSince(start);
    return games.size();
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: store-scan-bench <steam folder> [rounds]\n");
        return 2;
    }
    const std::string tree = argv[1];
    const int rounds = argc > 2 ? std::max(1, std::atoi(argv[2])) : 5;
    const SteamOnlyRegistry registry(tree);
    const corvandell::MapEnvironment environment;
    const corvandell::StoreHost host{registry, environment, {}};

    double ours = 0;
    const std::size_t games = scanOnce(host, ours);
    timeFind(tree);
    double bestOurs = 1e30;
    double bestFind = 1e30;
    for (int round = 0; round < rounds; ++round) {
        scanOnce(host, ours);
        bestOurs = std::min(bestOurs, ours);
        bestFind = std::min(bestFind, timeFind(tree));
    }
    std::printf("Steam scan of %s: %zu games, warm cache, best of %d\n", tree.c_str(), games, rounds);
    std::printf("  ours (scanSteamLibrary)   %8.3f s\n", bestOurs);
    std::printf("  find <tree> > /dev/null   %8.3f s\n", bestFind);
    std::printf("  ratio                     %8.2f x find (goal <= 1.3)\n", bestOurs / bestFind);
    return 0;
}
