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
    for (const Case& item :
         {Case{"", "", true}, Case{"", "r", true}, Case{"b", "r", true}, Case{"b", "", false}}) {
        Settings settings;
        settings.bearerToken = item.bearer;
        settings.refreshToken = item.refresh;
        EXPECT_EQ(needsSignIn(settings), item.signIn) << item.bearer << "/" << item.refresh;
    }
}

} // namespace
} // namespace corvandell
