// The sign-in decision: only a bearer token without a refresh token goes straight to the library.
#include "app/StartupDecision.hpp"

#include <gtest/gtest.h>

#include <tuple>

namespace corvandell {
namespace {

TEST(StartupDecision, OnlyABearerTokenWithoutARefreshTokenSkipsSignIn) {
    for (const auto& [bearer, refresh, signIn] : {std::tuple{"", "", true}, std::tuple{"", "r", true},
                                                  std::tuple{"b", "r", true}, std::tuple{"b", "", false}}) {
        Settings settings;
        settings.bearerToken = bearer;
        settings.refreshToken = refresh;
        EXPECT_EQ(needsSignIn(settings), signIn) << bearer << "/" << refresh;
    }
}

} // namespace
} // namespace corvandell
