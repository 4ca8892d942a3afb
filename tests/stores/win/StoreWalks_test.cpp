// Store scans under Wine over what can derail them on Windows: directory links the C++
// runtime does not report as links (made from the Linux side by the link-tree fixture),
// and a receipt that inflates to a gigabyte behind a trailer claiming 100 bytes.
#include <windows.h>

#include <psapi.h>

#include "stores/FolderWalk.hpp"
#include "stores/StoreFiles.hpp"
#include "stores/StoreScanners.hpp"
#include "stores/win/WindowsRegistry.hpp"
#include "support/DeflateBomb.hpp"
#include "support/TempFolder.hpp"
#include "support/win/ChildProcess.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace corvandell::win {
namespace {

ScanReport scanItchUnder(const std::filesystem::path& roaming) {
    const WindowsRegistry registry;
    const MapEnvironment environment({{"APPDATA", roaming}});
    ScanReport report;
    scanItchGames(StoreHost{registry, environment, {}}, report);
    return report;
}

TEST(StoreWalksTest, DirectoryLinksToTheLibraryAndTheWholeDriveAreNotFollowed) {
    const auto tree = test::fixtureFolder(L"CORVANDELL_TEST_FIXTURES") / L"link-tree";
    const auto game = tree / L"Roaming" / L"itch" / L"apps" / L"lantern";
    ASSERT_TRUE(std::filesystem::exists(game / L"bin" / L"Lantern.exe"))
        << "the link-tree fixture is not set up";

    // The check itself: the runtime calls these plain folders; their attributes do not.
    int links = 0;
    for (const auto& entry : std::filesystem::directory_iterator(game)) { // .itch, bin and library
        links += isLinkOrReparsePoint(entry) ? 1 : 0;
        EXPECT_EQ(isLinkOrReparsePoint(entry), entry.path().filename() == L"library") << entry.path();
        EXPECT_FALSE(entry.is_symlink()); // what makes the attribute check necessary
    }
    EXPECT_EQ(links, 1);

    // Following either link would walk the whole Linux tree (or loop); the scan ends at once.
    const ULONGLONG start = GetTickCount64();
    const ScanReport report = scanItchUnder(tree / L"Roaming");
    EXPECT_LT(GetTickCount64() - start, 5000u);
    ASSERT_EQ(report.games.size(), 1u);
    EXPECT_EQ(report.games[0].title, "Lantern");
    EXPECT_EQ(report.games[0].executable, game / L"bin" / L"Lantern.exe");
    ASSERT_EQ(report.skipped.size(), 1u);
    EXPECT_EQ(report.skipped[0].reason, kLinkNotFollowed);
    EXPECT_TRUE(report.skipped[0].entry.ends_with("whole-drive")) << report.skipped[0].entry;
}

SIZE_T peakCommitBytes() {
    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof(counters);
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters));
    return counters.PeakPagefileUsage;
}

TEST(StoreWalksTest, AReceiptThatInflatesPastTheCapIsSkippedWithoutInflatingIt) {
    test::TempFolder folder;
    const auto apps = std::filesystem::path(L"Roaming") / L"itch" / L"apps";
    // 1 GiB of content in under 7 MB, under a trailer that claims 100 bytes.
    folder.writeFile(apps / L"bomb" / L".itch" / L"receipt.json.gz",
                     test::gzipMember(test::deflateOfZeros(4'161'790), 100));
    folder.writeFile(apps / L"rock" / L".itch" / L"receipt.json",
                     R"({"game":{"id":11,"title":"Rock \u0026 Roll \ud83c\udfb8"}})");

    const SIZE_T before = peakCommitBytes();
    const ScanReport report = scanItchUnder(folder.path() / L"Roaming");
    const SIZE_T after = peakCommitBytes();
    ASSERT_EQ(report.games.size(), 1u);
    EXPECT_EQ(report.games[0].title, "Rock & Roll \xF0\x9F\x8E\xB8");
    ASSERT_EQ(report.skipped.size(), 1u);
    EXPECT_EQ(report.skipped[0].reason, "receipt.json.gz inflates to more than 16 MB");
    // The receipt itself is read (7 MB); inflating it would have taken a gigabyte.
    EXPECT_LT(after - before, SIZE_T{64} << 20);
}

} // namespace
} // namespace corvandell::win
