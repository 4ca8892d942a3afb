// The library in the real main window: the refresh job scans a Steam library laid out in
// this prefix and asks a scripted service; the list, the details pane, the action button,
// the ratings and the playtime panel then show what a user would see.
#include <windows.h>

#include <commctrl.h>

#include "app/LibraryCache.hpp"
#include "app/RowText.hpp"
#include "base/Utf8Path.hpp"
#include "support/ScriptedService.hpp"
#include "support/win/MainWindowUnderTest.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace corvandell::win {
namespace {

namespace fs = std::filesystem;

constexpr wchar_t kSteamKey[] = L"Software\\Valve\\Steam";
constexpr char kCatalogue[] = "GET /api/v1/software?pageSize=100&sort=name&platform=windows";

// Steam's registry value, set for one test and put back as it was after it.
class SteamPathValue {
public:
    explicit SteamPathValue(const fs::path& root) {
        wchar_t old[MAX_PATH] = {};
        DWORD bytes = sizeof(old);
        hadValue_ = RegGetValueW(HKEY_CURRENT_USER, kSteamKey, L"SteamPath", RRF_RT_REG_SZ, nullptr, old,
                                 &bytes) == ERROR_SUCCESS;
        old_ = old;
        const std::wstring value = root.wstring();
        RegSetKeyValueW(HKEY_CURRENT_USER, kSteamKey, L"SteamPath", REG_SZ, value.c_str(),
                        static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
    }
    ~SteamPathValue() {
        if (hadValue_) {
            RegSetKeyValueW(HKEY_CURRENT_USER, kSteamKey, L"SteamPath", REG_SZ, old_.c_str(),
                            static_cast<DWORD>((old_.size() + 1) * sizeof(wchar_t)));
        } else {
            RegDeleteKeyValueW(HKEY_CURRENT_USER, kSteamKey, L"SteamPath");
        }
    }
    SteamPathValue(const SteamPathValue&) = delete;
    SteamPathValue& operator=(const SteamPathValue&) = delete;

private:
    bool hadValue_ = false;
    std::wstring old_;
};

fs::path systemProgram(const wchar_t* name) {
    wchar_t folder[MAX_PATH] = {};
    GetSystemDirectoryW(folder, MAX_PATH);
    return fs::path(folder) / name;
}

class LibraryWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        // Steam with one game whose executable carries an icon, and whose name differs from
        // the catalogue title only in punctuation.
        const test::TempFolder& folder = w_.folder;
        const fs::path steam = folder.path() / "Steam";
        folder.writeFile(
            steam / "steamapps" / "appmanifest_620.acf",
            "\"AppState\"\n{\n\t\"appid\"\t\t\"620\"\n\t\"name\"\t\t\"Sky-Forge 2\"\n"
            "\t\"StateFlags\"\t\t\"4\"\n\t\"installdir\"\t\t\"Sky Forge Two\"\n\t\"buildid\"\t\t\"9\"\n}\n");
        folder.writeFile(steam / "steamapps" / "appmanifest_730.acf",
                         "\"AppState\"\n{\n\t\"appid\"\t\t\"730\"\n\t\"name\"\t\t\"Moss Valley\"\n"
                         "\t\"StateFlags\"\t\t\"4\"\n\t\"installdir\"\t\t\"Moss Valley\"\n}\n");
        const fs::path game = steam / "steamapps" / "common" / "Sky Forge Two";
        fs::create_directories(game);
        fs::copy_file(systemProgram(L"notepad.exe"), game / "SkyForge.exe");
        fs::create_directories(steam / "steamapps" / "common" / "Moss Valley");
        steamPath_ = std::make_unique<SteamPathValue>(steam);

        // Paper Moth was installed through the client, at a build older than the latest.
        GuardedFile library = libraryFileIn(w_.paths.dataFolder);
        const fs::path moth = w_.paths.defaultLibraryFolder / "Paper Moth";
        saveLibrary(library,
                    {{"t-moth", "Paper Moth", pathToUtf8(moth), pathToUtf8(moth / "moth.exe"), false, 1, 0}});

        service_->answer(kCatalogue,
                         R"({"items":[{"id":"t-sky","name":"Sky Forge 2","category":"Action",)"
                         R"("platform":"windows","description":"Mechs over floating islands."},)"
                         R"({"id":"t-ember","name":"Ember Keep","category":"RPG","platform":"windows"},)"
                         R"({"id":"t-moth","name":"Paper Moth","category":"Platformer",)"
                         R"("platform":"windows"}]})");
        service_->answer("GET /api/v1/me/entitlements",
                         R"({"items":[{"id":"e1","softwareTitleId":"t-ember","isRevoked":false}]})");
        service_->answer("GET /api/v1/software/t-moth/builds?pageSize=1",
                         R"({"items":[{"version":"1.0.1"}]})");
        service_->answer(
            "GET /api/v1/github-games",
            R"({"items":[{"id":"g1","repoUrl":"https://github.com/alice-codes/tiny-tower",)"
            R"("ownerLogin":"alice-codes","repoName":"tiny-tower","displayName":"Tiny Tower",)"
            R"("launchPath":"index.html","isVerifiedOwner":true,"submittedByUsername":"alice"}]})");
        service_->answer("GET /api/v1/me/github-games", R"({"items":[]})");
        service_->answer("POST /api/v1/ratings/query",
                         R"({"items":[{"gameKey":"t-sky","average":4.5,"count":2,"myStars":5}]})");
        service_->answer("GET /api/v1/activity/software/t-sky/playtime",
                         R"({"totalMinutes":55,"totalSeconds":3300})");
        service_->answer("GET /api/v1/activity/software/t-sky/friends-playtime?top=5",
                         R"({"items":[{"username":"bruno","minutes":140,"seconds":8400}]})");
        service_->answer(
            "GET /api/v1/activity/game-feed?key=t-sky&limit=8",
            R"({"items":[{"type":"rate","username":"chen","stars":4,"timestamp":"2026-11-24T10:00:00Z"}]})");

        w_.jobs.api = service_;
        w_.settings.bearerToken = token_;
        ASSERT_TRUE(w_.open());
        list_ = w_->control(command::List);
    }

    std::wstring listText(int row, int column) const {
        wchar_t text[128] = {};
        ListView_GetItemText(list_, row, column, text, 128);
        return text;
    }
    void select(int row) {
        ListView_SetItemState(list_, row, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    }

    std::string token_ = "token";
    std::shared_ptr<test::ScriptedService> service_ = std::make_shared<test::ScriptedService>();
    std::unique_ptr<SteamPathValue> steamPath_; // put back only once the window has gone
    test::MainWindowUnderTest w_;
    HWND list_ = nullptr;
};

constexpr wchar_t kRefreshed[] =
    L"Library refreshed. Included 2 games from your local Steam library. 1 GitHub browser games available.";

TEST_F(LibraryWindowTest, ARefreshMergesTheSourcesIntoTheListInOrderWithTheirStates) {
    ASSERT_TRUE(test::pumpUntil([this] { return w_->statusText() == kRefreshed; }, 10000))
        << narrow(w_->statusText());
    const std::vector<std::vector<std::wstring>> expected{
        {L"Sky Forge 2", L"Steam", L"Action", L"windows", L"\u2605 4.5 (2)"},
        {L"Ember Keep", L"Owned", L"RPG", L"windows", L""},
        {L"Paper Moth", L"Installed", L"Platformer", L"windows", L""},
        {L"Moss Valley", L"Steam", L"Steam", L"windows", L""},
        {L"Tiny Tower", L"Web (ready)", L"GitHub", L"web", L""},
    };
    ASSERT_TRUE(test::pumpUntil([this] { return listText(0, 4) == L"\u2605 4.5 (2)"; }, 5000))
        << "the ratings never arrived";
    ASSERT_EQ(ListView_GetItemCount(list_), static_cast<int>(expected.size()));
    for (size_t row = 0; row < expected.size(); ++row) {
        for (size_t column = 0; column < 5; ++column) {
            EXPECT_EQ(listText(static_cast<int>(row), static_cast<int>(column)), expected[row][column])
                << row << "," << column;
        }
    }
    EXPECT_TRUE(test::pumpUntil([this] { return w_->hasRowIcon("t-sky"); }, 10000))
        << "the Steam executable's icon never arrived";
    EXPECT_FALSE(w_->hasRowIcon("t-ember")) << "a title that is not installed has no icon";
}

TEST_F(LibraryWindowTest, SelectingARowFillsTheDetailsTheActionAndThePlaytimePanel) {
    ASSERT_TRUE(test::pumpUntil([this] { return w_->statusText() == kRefreshed; }, 10000));
    // Each kind of row's label and details are the row text's table test; the window shows them.
    select(2);
    EXPECT_EQ(hwndText(w_->control(command::Launch)), L"Update");
    select(0);
    EXPECT_EQ(hwndText(w_->control(command::Launch)), L"Launch");
    EXPECT_EQ(hwndText(w_->control(control::Details)), widen(detailsText(w_->rows()[0], {})));
    EXPECT_NE(hwndText(w_->control(control::Details)).find(L"\r\nSteam app id: 620\r\n"), std::wstring::npos);
    EXPECT_TRUE(test::pumpUntil(
        [this] {
            return w_->playtimePanel()->text() ==
                   L"You have played: 55 min\r\n\r\nFriends' playtime\r\n   bruno played 2 h 20 min\r\n\r\n"
                   L"Recent activity\r\n   chen rated it 4 stars (2026-11-24)";
        },
        5000))
        << narrow(w_->playtimePanel()->text());
    EXPECT_EQ(w_->playtimePanel()->myStars(), 5);
}

TEST_F(LibraryWindowTest, ARatingIsSavedOrTheStatusSaysItWasNot) {
    ASSERT_TRUE(test::pumpUntil([this] { return listText(0, 4) == L"\u2605 4.5 (2)"; }, 10000));
    select(0);
    service_->answer("PUT /api/v1/me/ratings", R"({"gameKey":"t-sky","average":4.0,"count":3,"myStars":3})");
    w_->rateSelected(3);
    EXPECT_TRUE(test::pumpUntil([this] { return listText(0, 4) == L"\u2605 4.0 (3)"; }, 5000));
    EXPECT_EQ(w_->playtimePanel()->myStars(), 3);

    service_->fail("PUT /api/v1/me/ratings", "HTTP request failed");
    w_->rateSelected(1);
    EXPECT_TRUE(test::pumpUntil([this] { return w_->statusText() == L"Could not save your rating."; }, 5000));
    EXPECT_EQ(w_->playtimePanel()->myStars(), 3) << "the rating that failed is taken back";
    EXPECT_EQ(listText(0, 4), L"\u2605 4.0 (3)");
}

class SignedOutLibraryWindowTest : public LibraryWindowTest {
protected:
    SignedOutLibraryWindowTest() { token_.clear(); }
};

TEST_F(SignedOutLibraryWindowTest, TheStatusAsksForASessionAndTheStarsDoNotRate) {
    ASSERT_TRUE(test::pumpUntil(
        [this] {
            return w_->statusText() ==
                   L"Library refreshed. Add a bearer token (Options > Connection) to load owned games. "
                   L"Included 2 "
                   L"games from your local Steam library. 1 GitHub browser games available.";
        },
        10000))
        << narrow(w_->statusText());
    select(0);
    EXPECT_EQ(w_->playtimePanel()->text(), L"Sign in to rate games.");
    w_->rateSelected(4);
    test::pumpUntil([] { return false; }, 300);
    EXPECT_EQ(w_->playtimePanel()->text(), L"Sign in to rate games.");
    const std::vector<std::string> asked = service_->requests();
    EXPECT_EQ(std::count_if(asked.begin(), asked.end(),
                            [](const std::string& r) { return r.starts_with("PUT /api/v1/me/ratings"); }),
              0);
}

} // namespace
} // namespace corvandell::win
