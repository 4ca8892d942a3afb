// The library's apply step on a large library: catalogue titles, Steam games and other
// stores' games merged by normalised name into the list's rows. Prints the median time for
// the base library and for four times as many rows, so the growth shows: a merge through
// the name index grows linearly, a scan per found game would grow sixteen-fold.
//   library-merge-bench [ROUNDS]
#include "app/LibraryMerge.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using namespace corvandell;

constexpr size_t kCatalogue = 7500;
constexpr size_t kSteam = 2000;
constexpr size_t kStore = 500;

// Made-up titles from a few word lists, numbered so every one is distinct.
std::string titleName(size_t index) {
    static const char* const first[] = {"Sky", "Ember", "Hollow", "Paper", "Iron", "Tide", "Glass", "Quiet"};
    static const char* const second[] = {"Forge",  "Keep",  "Lantern", "Moth",
                                         "Harbor", "Rally", "Wing",    "Run"};
    return std::string(first[index % 8]) + " " + second[(index / 8) % 8] + " " + std::to_string(index);
}

// Half the Steam games and a fifth of the store games are catalogue titles written another
// way ("Sky-Forge: 12"); the rest are games the catalogue does not have.
LibraryResult makeLibrary(size_t scale) {
    LibraryResult result;
    result.succeeded = true;
    const size_t catalogue = kCatalogue * scale;
    for (size_t i = 0; i < catalogue; ++i) {
        SoftwareItem item;
        item.id = "title-" + std::to_string(i);
        item.name = titleName(i);
        item.description = "A game of the benchmark catalogue.";
        item.category = "Action";
        item.platform = "windows";
        item.tags = {"bench", "synthetic"};
        result.catalogue.push_back(std::move(item));
        if (i % 3 == 0) {
            result.entitlements.push_back(
                Entitlement{"e" + std::to_string(i), "u", "title-" + std::to_string(i), false});
        }
    }
    for (size_t i = 0; i < kSteam * scale; ++i) {
        DetectedGame game;
        const bool isCatalogued = i % 2 == 0;
        std::string name = isCatalogued ? titleName(i * 3) : "Steam Only " + std::to_string(i);
        std::replace(name.begin(), name.end(), ' ', '-');
        game.key = "steam:" + std::to_string(100000 + i);
        game.title = name;
        game.steamAppId = std::to_string(100000 + i);
        game.installFolder = "C:/Steam/steamapps/common/" + name;
        game.executable = game.installFolder / "game.exe";
        result.steamRows.push_back(rowFromDetectedGame(game));
    }
    for (size_t i = 0; i < kStore * scale; ++i) {
        DetectedGame game;
        const bool isCatalogued = i % 5 == 0;
        game.title = isCatalogued ? titleName(i * 7 + 1) + ":" : "Store Only " + std::to_string(i);
        game.key = "epic:" + std::to_string(i);
        game.storeKey = "epic";
        game.storeName = "Epic Games";
        game.externalId = std::to_string(i);
        game.installFolder = "D:/Epic/" + game.title;
        result.storeRows.push_back(rowFromDetectedGame(game));
    }
    return result;
}

struct Timing {
    double medianMs = 0;
    double fastestMs = 0;
};

// The fastest round is the merge's own cost; the median shows what a busy machine adds.
Timing timeMerge(const LibraryResult& library, int rounds, size_t& rowCount) {
    std::vector<double> times;
    for (int round = 0; round < rounds; ++round) {
        const auto start = std::chrono::steady_clock::now();
        const std::vector<LibraryItem> rows = buildLibraryRows(library, {});
        const auto end = std::chrono::steady_clock::now();
        rowCount = rows.size();
        times.push_back(std::chrono::duration<double, std::milli>(end - start).count());
    }
    std::sort(times.begin(), times.end());
    return {times[times.size() / 2], times.front()};
}

} // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 15;
    Timing base;
    for (const size_t scale : {size_t{1}, size_t{4}}) {
        const LibraryResult library = makeLibrary(scale);
        size_t rows = 0;
        const Timing timing = timeMerge(library, rounds, rows);
        if (scale == 1) {
            base = timing;
        }
        std::printf(
            "%zux: %zu catalogue + %zu Steam + %zu store -> %zu rows: fastest %.2f ms, median %.2f ms "
            "of %d rounds",
            scale, library.catalogue.size(), library.steamRows.size(), library.storeRows.size(), rows,
            timing.fastestMs, timing.medianMs, rounds);
        if (scale != 1) {
            std::printf(" (%.2fx and %.2fx the 1x times)", timing.fastestMs / base.fastestMs,
                        timing.medianMs / base.medianMs);
        }
        std::printf("\n");
    }
    return 0;
}
