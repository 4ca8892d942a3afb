#include "webgames/AddGameForm.hpp"

#include <gtest/gtest.h>

namespace corvandell {
namespace {

const RepositoryHost kGitHub{"https://github.com", "github.io"};
constexpr char kNotAnAddress[] = "That doesn't look like a github.com repository or a *.github.io Pages URL.";
constexpr char kNeedsFields[] = "Enter a display name and the launch .html file (you don't own this repo).";
constexpr char kBadLaunch[] = "The launch file must be a repo-relative .html file.";

TEST(AddGameForm, ChecksTheFieldsBeforeAnythingIsSent) {
    const struct {
        AddGameInput input;
        const char* linkedLogin;
        const char* message; // "" when the submission goes ahead
        bool isOwner;
    } cases[] = {
        {{"https://github.com/alice/tower", "Tower", "index.html"}, "", "", false},
        {{"https://github.com/Alice-Codes/tower", "", ""}, "alice-codes", "", true},
        {{"github.com/alice-codes/tower.git/", "", ""}, "ALICE-CODES", "", true},
        {{"https://github.com/alice/tower", "", "index.html"}, "", kNeedsFields, false},
        {{"https://github.com/alice/tower", "Tower", "../index.html"}, "", kBadLaunch, false},
        {{"https://github.com/alice/tower", "Tower", "game/readme.txt"}, "", kBadLaunch, false},
        {{"https://github.com/alice/tower", "Tower", "web\\PLAY.HTM"}, "", "", false},
        // An owner's fields are not checked: the service reads corvandell.txt instead.
        {{"https://github.com/alice/tower", "", "../x.txt"}, "alice", "", true},
        // Hosted games need no launch file; the service asks a non-owner for a name.
        {{"https://alice.github.io/tower/?level=2#top", "", ""}, "", "", false},
        {{"https://Alice.github.io/", "", ""}, "alice", "", true},
        {{"https://gitlab.com/alice/tower", "Tower", "index.html"}, "", kNotAnAddress, false},
        {{"https://alice.github.io/../tower/", "", ""}, "", kNotAnAddress, false},
    };
    for (const auto& c : cases) {
        const AddGameCheck check = checkAddGame(c.input, c.linkedLogin, kGitHub);
        EXPECT_EQ(check.message, c.message) << c.input.address << " / " << c.input.launchFile;
        ASSERT_EQ(check.submission.has_value(), check.message.empty()) << c.input.address;
        if (check.submission) {
            EXPECT_EQ(check.submission->isOwner, c.isOwner) << c.input.address;
        }
    }
}

TEST(AddGameForm, SubmitsTheTrimmedFieldsAndTheAddressesParts) {
    const AddGameCheck check = checkAddGame(
        {"  https://www.github.com/Owner/Repo.git/ ", " Space Game ", " web/index.html "}, "", kGitHub);
    ASSERT_TRUE(check.submission);
    EXPECT_EQ(check.submission->address, "https://www.github.com/Owner/Repo.git/");
    EXPECT_EQ(check.submission->owner, "Owner");
    EXPECT_EQ(check.submission->repo, "Repo");
    EXPECT_EQ(check.submission->displayName, "Space Game");
    EXPECT_EQ(check.submission->launchFile, "web/index.html");
}

TEST(AddGameForm, TextsNameTheConfiguredHost) {
    const RepositoryHost loopback{"http://127.0.0.1:4567", "pages.test"};
    EXPECT_EQ(notAnAddressText(loopback),
              "That doesn't look like a 127.0.0.1:4567 repository or a *.pages.test Pages URL.");
    EXPECT_EQ(launchFileLabel(kGitHub),
              "Launch file - repo-relative .html (not needed for hosted *.github.io games)");
    EXPECT_EQ(linkedLoginText(""), "");
    EXPECT_EQ(
        linkedLoginText("alice-codes"),
        "Linked as alice-codes. If you own the repo, name and launch come from its corvandell.txt - leave "
        "the fields blank.");
    const AddGameCheck onLoopback =
        checkAddGame({"http://127.0.0.1:4567/player/orbit", "", ""}, "player", loopback);
    ASSERT_TRUE(onLoopback.submission);
    EXPECT_EQ(onLoopback.submission->repo, "orbit");
}

TEST(AddGameForm, RecognisesOnlyTheAlreadySharedConflict) {
    const std::string conflict =
        R"(Corvandell API HTTP 409: {"error":"already_shared","message":"Already shared by bruno",)"
        R"("submittedByUsername":"bruno","gameId":"g-7","ownerLogin":"pixel-forge"})";
    const struct {
        std::string errorText;
        std::optional<std::string> gameId;
    } cases[] = {
        {conflict, "g-7"},
        {R"(Corvandell API HTTP 409: {"error":"already_shared","submittedByUsername":"x","id":"g-8"})",
         "g-8"},
        {R"(Corvandell API HTTP 409: {"error":"conflict","gameId":"g-7"})", std::nullopt},
        {R"(Corvandell API HTTP 400: {"error":"already_shared","gameId":"g-7"})", std::nullopt},
    };
    for (const auto& c : cases) {
        const std::optional<AlreadyShared> shared = readAlreadyShared(c.errorText);
        EXPECT_EQ(shared ? std::optional(shared->gameId) : std::nullopt, c.gameId) << c.errorText;
    }
    const AlreadyShared shared = *readAlreadyShared(conflict);
    EXPECT_EQ(shared.sharedBy, "bruno");
    AddGameSubmission submission{
        "https://github.com/pixel-forge/orbit-hop", "pixel-forge", "orbit-hop", "", "", true};
    EXPECT_EQ(alreadySharedText(shared, submission), "Already shared by bruno");
    submission.isOwner = false;
    EXPECT_EQ(
        alreadySharedText(shared, submission),
        "Already shared by bruno\r\nIf 'pixel-forge' is your account, Link GitHub in Options > Profile, then "
        "press Take Ownership (the server verifies you own the repo). Add Game again shares your own copy.");
}

} // namespace
} // namespace corvandell
