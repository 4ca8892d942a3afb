#include "launch/LaunchKey.hpp"

#include <gtest/gtest.h>

namespace corvandell {
namespace {

TEST(LaunchKey, AKeyWithoutAColonIsACatalogueTitleAndAnyOtherSplitsAtTheFirstColon) {
    const struct {
        const char* key;
        bool isExternal;
        const char* softwareId;
        const char* provider;
        const char* externalId;
    } cases[] = {
        {"6f1c2a5e-0d1b-4f2e-9c55-1a2b3c4d5e6f", false, "6f1c2a5e-0d1b-4f2e-9c55-1a2b3c4d5e6f", "", ""},
        {"steam:440", true, "", "steam", "440"},
        {"epic:Finch:Lantern", true, "", "epic", "Finch:Lantern"},
        {":x", true, "", "", "x"},
    };
    for (const auto& [key, isExternal, softwareId, provider, externalId] : cases) {
        const LaunchKey split = splitLaunchKey(key);
        EXPECT_EQ(split.isExternal, isExternal) << key;
        EXPECT_EQ(split.softwareId, softwareId) << key;
        EXPECT_EQ(split.provider, provider) << key;
        EXPECT_EQ(split.externalId, externalId) << key;
    }
}

} // namespace
} // namespace corvandell
