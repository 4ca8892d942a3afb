// The Add Game dialog driven for real against the service stand-in: the checks made before
// anything is sent, a submission that closes the dialog, a service error, and a repository
// someone else shared first, with Take Ownership failing and then succeeding once the
// user's linked login is the repository's owner.
#include <windows.h>

#include "api/win/WinHttpApiClient.hpp"
#include "base/win/WideText.hpp"
#include "support/win/MessagePump.hpp"
#include "support/win/ServiceStandIn.hpp"
#include "webgames/win/AddGameDialog.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace corvandell::win {
namespace {

constexpr char kSubmitPath[] = "/api/v1/me/github-games";

// Names no earlier run against the same stand-in has used.
std::string unique(const std::string& name) {
    return name + "-" + std::to_string(GetCurrentProcessId()) + "-" +
           std::to_string(GetTickCount64() % 100000);
}

void linkLogin(const std::string& username, const std::string& login) {
    callStandIn("POST", "/__test/github-link",
                R"({"username":")" + username + R"(","login":")" + login + R"("})");
}

bool hasStyle(HWND control, DWORD style) {
    return (GetWindowLongPtrW(control, GWL_STYLE) & style) == style;
}

class AddGameDialogTest : public ::testing::Test {
protected:
    // Every game shared here is removed again: the library of other tests lists them all.
    void TearDown() override {
        dialog_.reset();
        for (Settings& user : users_) {
            WinHttpApiClient api(&user);
            for (const RepositoryGame& game : api.listMyRepositoryGames()) {
                api.deleteRepositoryGame(game.id);
            }
        }
    }

    Settings newUser(const std::string& username) {
        users_.push_back(signedInSettings(username));
        return users_.back();
    }

    // A dialog of a new user of the stand-in, with `login` linked ("" for none), that has
    // had the service's answer about the login.
    void open(const std::string& username, const std::string& login = "") {
        username_ = username;
        settings_ = newUser(username);
        linkLogin(username, login);
        dialog_ =
            std::make_unique<AddGameDialog>(GetModuleHandleW(nullptr), nullptr,
                                            std::make_shared<WinHttpApiClient>(&settings_), RepositoryHost{});
        ASSERT_TRUE(dialog_->create(SW_HIDE));
        ASSERT_TRUE(test::pumpUntil([this] { return dialog_->hasLinkedLogin(); }, 20'000));
    }

    void type(const std::string& address, const std::string& name, const std::string& launch) {
        SetWindowTextW(dialog_->control(addgame::Address), widen(address).c_str());
        SetWindowTextW(dialog_->control(addgame::Name), widen(name).c_str());
        SetWindowTextW(dialog_->control(addgame::Launch), widen(launch).c_str());
    }

    // A click, which only an enabled and shown button can take.
    void press(int id) {
        HWND button = dialog_->control(id);
        ASSERT_TRUE(IsWindowEnabled(button) && hasStyle(button, WS_VISIBLE)) << id;
        SendMessageW(dialog_->hwnd(), WM_COMMAND, MAKEWPARAM(id, BN_CLICKED),
                     reinterpret_cast<LPARAM>(button));
    }

    // Pumps until the worker's answer has put the dialog back to editing (or closed it).
    void waitForAnswer() {
        ASSERT_TRUE(test::pumpUntil(
            [this] { return dialog_->isDone() || dialog_->state() == AddGameDialog::State::Editing; },
            20'000));
    }

    std::string status() const { return narrow(dialog_->statusText()); }

    std::string username_;
    Settings settings_;
    std::vector<Settings> users_;
    std::unique_ptr<AddGameDialog> dialog_;
};

// Which input gets which refusal is AddGameForm's table; one here shows the dialog's part.
TEST_F(AddGameDialogTest, ShowsTheLinkedLoginAndRefusesBeforeSending) {
    open(unique("adder"), "Adder-Login");
    EXPECT_EQ(status(),
              "Linked as Adder-Login. If you own the repo, name and launch come from its corvandell.txt - "
              "leave the fields blank.");
    EXPECT_FALSE(hasStyle(dialog_->control(addgame::TakeOwnership), WS_VISIBLE));

    const std::size_t requestsBefore = receivedRequests().size();
    type("https://gitlab.com/a/b", "B", "index.html");
    press(addgame::AddGame);
    EXPECT_EQ(status(), "That doesn't look like a github.com repository or a *.github.io Pages URL.");
    EXPECT_EQ(dialog_->state(), AddGameDialog::State::Editing);
    EXPECT_EQ(receivedRequests().size(), requestsBefore) << "a refused address reached the service";
    press(addgame::Cancel);
    EXPECT_TRUE(dialog_->isDone());
    EXPECT_FALSE(dialog_->wasGameAdded());
    EXPECT_EQ(dialog_->hwnd(), nullptr);
}

TEST_F(AddGameDialogTest, SubmitsOnAWorkerAndClosesOrShowsTheServicesError) {
    // The owner's fields may stay blank: the service reads them from corvandell.txt.
    const std::string owner = unique("owner");
    open(unique("sharer"), owner);

    scriptNextReply(kSubmitPath, 500, R"({"error":"internal","message":"Database is down"})");
    type("https://github.com/" + owner + "/tower", "", "");
    press(addgame::AddGame);
    EXPECT_EQ(status(), "Submitting...");
    EXPECT_EQ(dialog_->state(), AddGameDialog::State::Submitting);
    EXPECT_FALSE(IsWindowEnabled(dialog_->control(addgame::AddGame)));
    waitForAnswer();
    EXPECT_EQ(
        status(),
        R"(Could not add the game: Corvandell API HTTP 500: {"error":"internal","message":"Database is down"})");
    EXPECT_FALSE(dialog_->isDone());
    EXPECT_TRUE(IsWindowEnabled(dialog_->control(addgame::AddGame)));

    press(addgame::AddGame);
    waitForAnswer();
    EXPECT_TRUE(dialog_->isDone()) << status();
    EXPECT_TRUE(dialog_->wasGameAdded());
    const ReceivedRequest sent = lastReceivedRequest();
    EXPECT_EQ(sent.method + " " + sent.path, std::string("POST ") + kSubmitPath);
    EXPECT_EQ(sent.body,
              R"({"repoUrl":"https://github.com/)" + owner + R"(/tower","displayName":"","launchPath":""})");
    WinHttpApiClient api(&settings_);
    const auto mine = api.listMyRepositoryGames();
    ASSERT_EQ(mine.size(), 1u);
    EXPECT_EQ(mine[0].repoName, "tower");
    EXPECT_TRUE(mine[0].isVerifiedOwner);
}

TEST_F(AddGameDialogTest, AlreadySharedOffersTakeOwnershipWhichTheServerVerifies) {
    // Someone shares another user's repository first.
    const std::string owner = unique("maker");
    const std::string first = unique("first");
    Settings firstSettings = newUser(first);
    WinHttpApiClient(&firstSettings)
        .submitRepositoryGame("https://github.com/" + owner + "/blocks", "Blocks", "web/index.html");

    open(unique("maker-account"));
    type("https://www.github.com/" + owner + "/blocks.git", "My Blocks", "index.html");
    press(addgame::AddGame);
    waitForAnswer();
    EXPECT_EQ(status(),
              "Already shared by " + first + "\r\nIf '" + owner +
                  "' is your account, Link GitHub in Options > Profile, then press Take Ownership (the "
                  "server verifies you own the repo). Add Game again shares your own copy.");
    HWND takeOwnership = dialog_->control(addgame::TakeOwnership);
    EXPECT_TRUE(hasStyle(takeOwnership, WS_VISIBLE));
    EXPECT_TRUE(IsWindowEnabled(takeOwnership));

    // Not linked yet: the server refuses.
    press(addgame::TakeOwnership);
    EXPECT_EQ(status(), "Asking the server to verify you own this repository...");
    EXPECT_EQ(dialog_->state(), AddGameDialog::State::Claiming);
    EXPECT_FALSE(IsWindowEnabled(takeOwnership));
    EXPECT_FALSE(IsWindowEnabled(dialog_->control(addgame::AddGame)));
    waitForAnswer();
    EXPECT_TRUE(status().starts_with("Could not take ownership: Corvandell API HTTP 403: ")) << status();
    EXPECT_NE(status().find("github_not_linked"), std::string::npos) << status();
    EXPECT_FALSE(dialog_->isDone());
    EXPECT_TRUE(IsWindowEnabled(takeOwnership));
    EXPECT_TRUE(IsWindowEnabled(dialog_->control(addgame::AddGame)));

    // Linked as the owner, in another letter case: the claim goes through and closes.
    std::string upperOwner = owner;
    std::transform(upperOwner.begin(), upperOwner.end(), upperOwner.begin(),
                   [](char c) { return static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c); });
    linkLogin(username_, upperOwner);
    press(addgame::TakeOwnership);
    waitForAnswer();
    EXPECT_TRUE(dialog_->isDone()) << status();
    EXPECT_TRUE(dialog_->wasGameAdded());
    const auto mine = WinHttpApiClient(&settings_).listMyRepositoryGames();
    ASSERT_EQ(mine.size(), 1u);
    EXPECT_EQ(mine[0].displayName, "Blocks");
    EXPECT_TRUE(mine[0].isVerifiedOwner);
}

} // namespace
} // namespace corvandell::win
