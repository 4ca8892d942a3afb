#include "launch/LaunchSessions.hpp"

#include "support/ScriptedService.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell {
namespace {

TEST(LaunchSessions, TheRowKeyChoosesBetweenATitleLaunchAndAnExternalOne) {
    test::ScriptedService service;
    service.answer("POST /api/v1/software/t-1/launch", R"({"id":"L1","launchId":"L1","startTime":"x"})");
    service.answer("POST /api/v1/activity/external-launches", R"({"launchId":"X9","id":"X9"})");
    const struct {
        const char* key;
        const char* sessionId;
        bool isExternal;
        std::string request;
    } cases[] = {
        {"t-1", "L1", false, "POST /api/v1/software/t-1/launch"},
        {"steam:104900", "X9", true,
         R"(POST /api/v1/activity/external-launches {"provider":"steam","externalSoftwareId":"104900","name":"Sky \"H\""})"},
        {"t-2", "", false, "POST /api/v1/software/t-2/launch"}, // the service refuses: no session
    };
    for (const auto& [key, sessionId, isExternal, request] : cases) {
        const LaunchRecord record = openLaunchSession(service, 41, key, "Sky \"H\"");
        EXPECT_EQ(record.launchToken, 41u);
        EXPECT_EQ(record.rowKey, key);
        EXPECT_EQ(record.sessionId, sessionId) << key;
        EXPECT_EQ(record.isExternal, isExternal) << key;
        EXPECT_EQ(service.requests().back(), request);
    }
}

TEST(LaunchSessions, ClosingASessionUsesItsOwnKindOfEndAndSwallowsAFailure) {
    test::ScriptedService service;
    service.answer("POST /api/v1/activity/launches/L1/end", "{}");
    closeLaunchSession(service, "L1", false);
    closeLaunchSession(service, "X9", true); // not scripted: 404, not thrown
    EXPECT_EQ(service.requests(),
              (std::vector<std::string>{"POST /api/v1/activity/launches/L1/end",
                                        "POST /api/v1/activity/external-launches/X9/end"}));
}

TEST(LaunchSessions, TheHintFlagLivesInTheProfileMetadataBesideWhatElseItHolds) {
    const struct {
        const char* metadata;
        bool isShown;
        const char* marked;
    } cases[] = {
        {"", false, R"({"overlayHintShown":true})"},
        {R"( { "bio":"a,b" })", false, R"( {"overlayHintShown":true, "bio":"a,b" })"},
        {R"({"bio":"x","overlayHintShown" : false})", false, R"({"bio":"x","overlayHintShown" :true})"},
        {R"({"overlayHintShown":true})", true, R"({"overlayHintShown":true})"},
        // Only the key itself counts, not the same words inside a text.
        {R"({"bio":"I set \"overlayHintShown\":true"})", false,
         R"({"overlayHintShown":true,"bio":"I set \"overlayHintShown\":true"})"},
    };
    for (const auto& [metadata, isShown, marked] : cases) {
        EXPECT_EQ(isOverlayHintShownIn(metadata), isShown) << metadata;
        EXPECT_EQ(withOverlayHintShown(metadata), marked) << metadata;
        EXPECT_TRUE(isOverlayHintShownIn(withOverlayHintShown(metadata))) << metadata;
    }
}

TEST(LaunchSessions, TheHintCheckSaysWhetherTheServiceAnsweredAndMarkingKeepsTheMetadata) {
    test::ScriptedService service;
    OverlayHintCheck check = checkOverlayHint(service, "t-1");
    EXPECT_FALSE(check.isChecked);
    EXPECT_EQ(check.rowKey, "t-1");

    service.answer("GET /api/v1/me", R"({"id":"u","metadata":"{\"skin\":\"dusk\"}"})");
    check = checkOverlayHint(service, "t-1");
    EXPECT_TRUE(check.isChecked);
    EXPECT_FALSE(check.isAlreadyShown);

    service.answer("PATCH /api/v1/me", "{}");
    markOverlayHintShown(service);
    EXPECT_EQ(service.requests().back(),
              R"(PATCH /api/v1/me {"metadata":"{\"overlayHintShown\":true,\"skin\":\"dusk\"}"})");

    service.answer("GET /api/v1/me", R"({"id":"u","metadata":"{\"overlayHintShown\":true}"})");
    EXPECT_TRUE(checkOverlayHint(service, "t-1").isAlreadyShown);
}

} // namespace
} // namespace corvandell
