// The install job against the service stand-in on loopback: real grants and signed links
// for seeded titles (one sent with a Content-Length, one chunked), and scripted grants and
// files for what the seed never does: downloads that break off, hostile file names, a
// refused link, a paced download and a build with a real program in it.
#include <windows.h>

#include "api/JsonText.hpp"
#include "base/Utf8Path.hpp"
#include "launch/DownloadRateCap.hpp"
#include "launch/InstalledBuild.hpp"
#include "launch/win/InstallJob.hpp"
#include "support/TempFolder.hpp"
#include "support/win/ChildProcess.hpp"
#include "support/win/ServiceStandIn.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

namespace corvandell::win {
namespace {

namespace fs = std::filesystem;

constexpr char kEmberKeep[] = "2860dc9d-ab01-5354-8304-4c562bcb86fb";       // Content-Length, one file
constexpr char kStarfallCourier[] = "6002ee77-26af-5cc2-bf16-cd2cf996effb"; // chunked, two files

std::string downloadRoute(const std::string& titleId) {
    return "/api/v1/software/" + titleId + "/download";
}

std::string assetJson(const std::string& name, const std::string& url) {
    return "{\"assetId\":\"" + escapeBodyString(name) + "\",\"type\":\"data\",\"signedUrl\":\"" +
           escapeBodyString(url) + "\"}";
}

// Every regular file under `folder`, relative and with '/' separators, sorted.
std::vector<std::string> filesUnder(const fs::path& folder) {
    std::vector<std::string> files;
    std::error_code error;
    for (auto it = fs::recursive_directory_iterator(folder, error);
         !error && it != fs::recursive_directory_iterator(); it.increment(error)) {
        if (it->is_regular_file()) {
            files.push_back(pathToUtf8(fs::relative(it->path(), folder).generic_wstring()));
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

class InstallJobTest : public ::testing::Test {
protected:
    InstallResult install(const std::string& titleId, const std::string& name, int limitKbps = 0,
                          const std::string& existingInstallPath = {}) {
        reports_.clear();
        CancellableClock clock(cancel_);
        return runInstall(
            api_, {titleId, name, library(), limitKbps, existingInstallPath},
            [this](const DownloadProgress& progress) { reports_.push_back(progress); }, clock, cancel_);
    }

    // What the service grants for the title, asked independently of the client.
    std::string grant(const std::string& titleId) {
        return ProbeClient(&settings_).request("POST", downloadRoute(titleId), "");
    }

    fs::path library() const { return folder_.path() / "Games"; }
    std::string fileUrl(const std::string& name) const { return serviceBaseUrl() + "/files/" + name; }

    Settings settings_ = signedInSettings("demo");
    WinHttpApiClient api_{&settings_};
    test::TempFolder folder_;
    DownloadCancel cancel_;
    std::vector<DownloadProgress> reports_;
};

TEST_F(InstallJobTest, InstallsSeededBuildsSentWithAndWithoutAContentLength) {
    struct Case {
        const char* titleId;
        const char* name;
        std::vector<std::string> files;
        bool isLengthSent;
        const char* version;
    };
    const Case cases[] = {
        {kEmberKeep, "Ember Keep", {"asset.bin"}, true, "1.2.0"},
        {kStarfallCourier,
         "Starfall Courier",
         {"starfall-courier-content.bin", "starfall-courier-core.bin"},
         false,
         "2.0.1"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const InstallResult result = install(c.titleId, c.name);
        ASSERT_TRUE(result.succeeded) << result.errorText;
        const fs::path folder = library() / pathFromUtf8(c.name);
        EXPECT_EQ(result.installPath, pathToUtf8(folder));
        EXPECT_EQ(result.executablePath, ""); // the seeded builds are archives, not programs
        EXPECT_EQ(result.version, c.version);
        EXPECT_EQ(readInstalledBuild(folder), (InstalledBuild{c.titleId, c.version}));

        std::vector<std::string> expected = c.files;
        expected.push_back(kInstalledBuildFileName);
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(filesUnder(folder), expected); // and no partial file left behind

        // Each file is exactly as long as the service says, and the archives are whole zips.
        const std::string granted = grant(c.titleId);
        std::uint64_t lastFileBytes = 0;
        if (c.isLengthSent) {
            lastFileBytes = static_cast<std::uint64_t>(readInt64(granted, "sizeBytes", -1));
            EXPECT_EQ(fs::file_size(folder / "asset.bin"), lastFileBytes);
        } else {
            for (const std::string& item : readObjectList(granted, "items")) {
                lastFileBytes = static_cast<std::uint64_t>(readInt64(item, "sizeBytes", -1));
                EXPECT_EQ(fs::file_size(folder / pathFromUtf8(readString(item, "assetId") + ".bin")),
                          lastFileBytes);
            }
        }
        const std::string archive = test::readTestFile(folder / c.files.back());
        EXPECT_EQ(archive.substr(0, 4), "PK\x03\x04");
        EXPECT_NE(archive.rfind("PK\x05\x06"), std::string::npos);

        // Progress: "Downloading" per chunk with the 64-bit length, or 0 and 0% without one.
        ASSERT_GE(reports_.size(), 2u);
        EXPECT_EQ(reports_.back().phase, L"Installed");
        const DownloadProgress& lastChunk = reports_[reports_.size() - 2];
        EXPECT_EQ(lastChunk.phase, L"Downloading");
        EXPECT_EQ(lastChunk.received, lastFileBytes);
        EXPECT_EQ(lastChunk.total, c.isLengthSent ? lastFileBytes : 0u);
        EXPECT_EQ(lastChunk.percent, c.isLengthSent ? 100 : 0);
        for (std::size_t i = 0; i + 1 < reports_.size(); ++i) {
            EXPECT_EQ(reports_[i].titleId, c.titleId);
            if (!c.isLengthSent) {
                EXPECT_EQ(reports_[i].percent, 0);
            } else if (i > 0) {
                EXPECT_GE(reports_[i].percent, reports_[i - 1].percent);
            }
        }
    }
}

TEST_F(InstallJobTest, TheCapMakesASmallDownloadTakeAtLeastTheComputedTime) {
    const std::string data(12 * 1024, 'c');
    const int limitKbps = 4;
    scriptNextReply(downloadRoute(kEmberKeep), 200,
                    "{\"items\":[" + assetJson("paced", fileUrl("paced")) + "]}");
    scriptFileReply("/files/paced", data, FileTransfer::WithLength);
    const ULONGLONG start = GetTickCount64();
    const InstallResult result = install(kEmberKeep, "Paced", limitKbps);
    const ULONGLONG elapsedMs = GetTickCount64() - start;
    ASSERT_TRUE(result.succeeded) << result.errorText;
    EXPECT_EQ(fs::file_size(library() / "Paced" / "paced.bin"), data.size());
    // 12 KiB at 4 KiB/s: three seconds at least (a tick's worth of slack for the clock).
    EXPECT_GE(elapsedMs + 16, rateCapDelayMs(data.size(), limitKbps, 0));
}

TEST_F(InstallJobTest, ADownloadThatBreaksOffLeavesThePreviousBuildAsItWas) {
    // An earlier build is installed; its update's second file breaks off.
    const fs::path folder = library() / "Ember Keep";
    folder_.writeFile(fs::relative(folder / "first.bin", folder_.path()), "old first");
    folder_.writeFile(fs::relative(folder / "second.bin", folder_.path()), "old second");
    writeInstalledBuild(folder, {kEmberKeep, "1.1.4"});
    const std::string first(40'000, '1');
    const std::string second(30'000, '2');

    for (const FileTransfer transfer : {FileTransfer::CutShort, FileTransfer::Chunked}) {
        scriptNextReply(downloadRoute(kEmberKeep), 200,
                        "{\"items\":[" + assetJson("first", fileUrl("first")) + "," +
                            assetJson("second", fileUrl("second")) + "]}");
        scriptFileReply("/files/first", first, FileTransfer::WithLength);
        if (transfer == FileTransfer::CutShort) {
            scriptFileReply("/files/second", second, FileTransfer::CutShort);
        } else {
            scriptNextReply("/files/second", 410, "{\"error\":\"link_expired\"}"); // a refused link
        }
        const InstallResult result = install(kEmberKeep, "Ember Keep", 0, pathToUtf8(folder));
        EXPECT_FALSE(result.succeeded);
        EXPECT_EQ(result.errorText,
                  transfer == FileTransfer::CutShort
                      ? "Install failed: The download of \"second\" ended after 30000 of 31000 bytes."
                      : "Install failed: The download of \"second\" was refused (HTTP 410).");
        EXPECT_EQ(filesUnder(folder),
                  (std::vector<std::string>{"corvandell-build.json", "first.bin", "second.bin"}));
        EXPECT_EQ(test::readTestFile(folder / "first.bin"), "old first");
        EXPECT_EQ(test::readTestFile(folder / "second.bin"), "old second");
        EXPECT_EQ(readInstalledBuild(folder).version, "1.1.4");
    }
}

TEST_F(InstallJobTest, GrantsWithoutFilesOrWithUnsafeNamesWriteNothing) {
    struct Case {
        std::string grant;
        std::string errorText;
    };
    const std::string url = fileUrl("never");
    const auto unsafe = [](const std::string& name) {
        return "Install failed: The service gave an unsafe file name: \"" + name + "\".";
    };
    const Case cases[] = {
        {"{\"items\":[]}", "Install failed: No downloadable assets returned by API."},
        {"{\"items\":[" + assetJson("x", "") + "]}",
         "Install failed: No downloadable assets returned by API."},
        {"{\"items\":[" + assetJson("../evil", url) + "]}", unsafe("../evil")},
        {"{\"items\":[" + assetJson("..\\evil", url) + "]}", unsafe("..\\evil")},
        {"{\"items\":[" + assetJson("bin/../../evil", url) + "]}", unsafe("bin/../../evil")},
        {"{\"items\":[" + assetJson("C:\\evil.exe", url) + "]}", unsafe("C:\\evil.exe")},
        {"{\"items\":[" + assetJson("\\\\server\\share\\evil", url) + "]}",
         unsafe("\\\\server\\share\\evil")},
        {"{\"items\":[" + assetJson("/evil", url) + "]}", unsafe("/evil")},
        {"{\"items\":[" + assetJson("CON", url) + "]}", unsafe("CON")},
        {"{\"items\":[" + assetJson("ok", url) + "," + assetJson("nul.txt", url) + "]}", unsafe("nul.txt")},
        {"{\"items\":[" + assetJson("Data", url) + "," + assetJson("data", url) + "]}",
         "Install failed: The service named the file \"data\" twice."},
    };
    for (const Case& c : cases) {
        scriptNextReply(downloadRoute(kEmberKeep), 200, c.grant);
        const InstallResult result = install(kEmberKeep, "Ember Keep");
        EXPECT_FALSE(result.succeeded) << c.grant;
        EXPECT_EQ(result.errorText, c.errorText) << c.grant;
        EXPECT_EQ(filesUnder(folder_.path()), std::vector<std::string>{}) << c.grant;
        EXPECT_NE(lastReceivedRequest().path, "/files/never") << c.grant;
    }
}

// The started file keeps its ".bin"; Windows runs a program by its contents.
TEST_F(InstallJobTest, TheProgramOfABuildIsRecordedAndStarts) {
    const std::string program = test::readTestFile(test::siblingExecutable(L"corvandell-clone.exe"));
    ASSERT_GT(program.size(), 100'000u);
    scriptNextReply(downloadRoute(kEmberKeep), 200,
                    "{\"items\":[" + assetJson("readme.txt", fileUrl("readme")) + "," +
                        assetJson("bin/Game.exe", fileUrl("game")) + "]}");
    scriptFileReply("/files/readme", "Read me.", FileTransfer::WithLength);
    scriptFileReply("/files/game", program, FileTransfer::Chunked);
    const InstallResult result = install(kEmberKeep, "Ember Keep");
    ASSERT_TRUE(result.succeeded) << result.errorText;
    const fs::path executable = library() / "Ember Keep" / "bin" / "Game.exe.bin";
    EXPECT_EQ(result.executablePath, pathToUtf8(executable));
    EXPECT_EQ(test::readTestFile(executable), program);

    const test::ChildResult run = test::runAndCapture(L"\"" + executable.wstring() + L"\"", 30'000);
    EXPECT_EQ(run.exitCode, 2u) << run.output; // the tool's answer to being started without arguments
    EXPECT_NE(run.output.find("usage: corvandell-clone"), std::string::npos) << run.output;
}

TEST_F(InstallJobTest, ACancelledInstallStopsAndRemovesItsPartialFile) {
    scriptNextReply(downloadRoute(kEmberKeep), 200,
                    "{\"items\":[" + assetJson("slow", fileUrl("slow")) + "]}");
    scriptFileReply("/files/slow", std::string(64 * 1024, 's'), FileTransfer::Chunked);
    // The client closes while the cap holds the download back.
    std::thread closer([this] {
        Sleep(300);
        cancel_.cancel();
    });
    const ULONGLONG start = GetTickCount64();
    const InstallResult result = install(kEmberKeep, "Ember Keep", 1);
    closer.join();
    EXPECT_LT(GetTickCount64() - start, 10'000u); // not the minute the cap would take
    EXPECT_EQ(result.errorText, "Install failed: The client is closing.");
    EXPECT_EQ(filesUnder(folder_.path()), std::vector<std::string>{});
}

} // namespace
} // namespace corvandell::win
