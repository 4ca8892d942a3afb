#include "app/StartupDecision.hpp"

#include <gtest/gtest.h>

namespace corvandell {
namespace {

TEST(StartupDecision, OnlyABearerTokenWithoutARefreshTokenSkipsSignIn) {
    struct Case {
        const char* bearer;
        const char* refresh;
        bool signIn;
    };
    const Case cases[] = {
        {"", "", true},     // never signed in
        {"", "r1", true},   // only a refresh token: renew
        {"b1", "r1", true}, // a session to renew first
        {"b1", "", false},  // a stored bearer token goes straight in
    };
    for (const Case& item : cases) {
        Settings settings;
        settings.bearerToken = item.bearer;
        settings.refreshToken = item.refresh;
        EXPECT_EQ(needsSignIn(settings), item.signIn) << item.bearer << "/" << item.refresh;
    }
}

} // namespace
} // namespace corvandell
