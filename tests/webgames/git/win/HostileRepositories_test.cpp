// Packs real git would never send (tests/support/make-crafted-packs.py), served over smart
// HTTP on loopback and cloned by corvandell-clone.exe as a user's clone runs: each is refused
// without the memory it asks for and without touching the old copy, while a well-formed pack
// served the same way clones, so the refusals are the packs' doing, not the server's.
#include "support/TempFolder.hpp"
#include "support/win/ChildProcess.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace corvandell::test {
namespace {

constexpr std::size_t kMaxPeakBytes = std::size_t{100} << 20;
// Only against a runaway: a refusal takes about a second.
constexpr DWORD kTimeoutMs = 60000;

std::map<std::wstring, std::string> filesUnder(const std::filesystem::path& root) {
    std::map<std::wstring, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        if (entry.is_regular_file()) {
            files[entry.path().lexically_relative(root).wstring()] = readTestFile(entry.path());
        }
    }
    return files;
}

// The number the tool prints after "Peak memory: ", or none.
std::optional<std::size_t> peakBytes(const std::string& output) {
    const std::string label = "Peak memory: ";
    const std::size_t at = output.find(label);
    if (at == std::string::npos) {
        return std::nullopt;
    }
    return std::stoull(output.substr(at + label.size()));
}

TEST(HostileRepositories, AreRefusedWithoutTakingTheirMemoryAndLeaveTheOldCopy) {
    const std::filesystem::path state = fixtureFolder(L"CORVANDELL_TEST_FIXTURES") / L"git-http";
    const std::string hostUrl = readTestFile(state / "url");
    ASSERT_FALSE(hostUrl.empty()) << "CORVANDELL_TEST_FIXTURES is not set";
    const std::wstring tool = L"\"" + siblingExecutable(L"corvandell-clone.exe").wstring() + L"\"";
    struct Case {
        const wchar_t* repo;
        const char* outcome; // the tool's last line before the memory figure
    };
    const std::vector<Case> cases = {
        {L"delta-bomb", "Clone failed: repository too large"},
        {L"lying-header", "Clone failed: repository too large"},
        {L"zeros", "Clone failed: repository too large"},
        {L"missing-blob", "Clone failed: missing blob object in pack"},
        {L"well-formed", "Clone complete."},
    };
    for (const Case& test : cases) {
        const TempFolder folder;
        folder.writeFile(L"game/old.txt", "old");
        const auto destination = folder.path() / L"game";
        const auto start = std::chrono::steady_clock::now();
        const ChildResult result =
            runAndCapture(tool + L" crafted " + test.repo + L" \"" + destination.wstring() + L"\" --host " +
                              std::wstring(hostUrl.begin(), hostUrl.end()) + L" --peak-memory",
                          kTimeoutMs);
        const auto elapsedMs =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start)
                .count();
        const auto peak = peakBytes(result.output);
        const bool isSuccess = std::string(test.outcome) == "Clone complete.";
        std::printf("%ls: exit %lu after %lld ms, peak working set %.1f MB\n", test.repo, result.exitCode,
                    static_cast<long long>(elapsedMs), peak ? static_cast<double>(*peak) / (1 << 20) : -1.0);
        EXPECT_EQ(result.exitCode, isSuccess ? 0u : 1u) << result.output;
        EXPECT_NE(result.output.find(std::string(test.outcome) + "\r\nPeak memory: "), std::string::npos)
            << result.output;
        ASSERT_TRUE(peak.has_value()) << result.output;
        EXPECT_LT(*peak, kMaxPeakBytes) << result.output;
        const auto expected = isSuccess ? filesUnder(state / "crafted" / test.repo / "expected")
                                        : std::map<std::wstring, std::string>{{L"old.txt", "old"}};
        EXPECT_TRUE(filesUnder(destination) == expected) << result.output;
    }
}

} // namespace
} // namespace corvandell::test
