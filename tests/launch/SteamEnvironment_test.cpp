#include "launch/SteamEnvironment.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell {
namespace {

using namespace std::string_literals;

TEST(SteamEnvironment, TheBlockKeepsEveryEntryInOrderAndEndsWithTheThreeSteamVariables) {
    const struct {
        std::vector<std::wstring> entries;
        std::wstring appId;
        std::wstring block;
    } cases[] = {
        {{L"=C:=C:\\Games", L"PATH=C:\\Windows", L"TEMP=C:\\T"},
         L"440",
         L"=C:=C:\\Games\0PATH=C:\\Windows\0TEMP=C:\\T\0SteamAppId=440\0SteamGameId=440\0"
         L"SteamNoOverlayUIDrawing=1\0\0"s},
        // An inherited Steam variable stays where it was; ours come after it.
        {{L"SteamAppId=10", L"Z=\u00e9"},
         L"730",
         L"SteamAppId=10\0Z=\u00e9\0SteamAppId=730\0SteamGameId=730\0SteamNoOverlayUIDrawing=1\0\0"s},
    };
    for (const auto& [entries, appId, block] : cases) {
        EXPECT_EQ(steamEnvironmentBlock(entries, appId), block);
        EXPECT_EQ(splitEnvironmentBlock(steamEnvironmentBlock(entries, appId)).size(), entries.size() + 3);
    }
}

TEST(SteamEnvironment, ReadingABlockStopsAtItsEndAndDropsACutOffEntry) {
    const struct {
        std::wstring block;
        std::vector<std::wstring> entries;
    } cases[] = {
        {L"A=1\0B=2\0\0"s, {L"A=1", L"B=2"}},
        {L"A=1\0\0B=2\0\0"s, {L"A=1"}}, // the first empty entry is the block's end
        {L"A=1\0B=2"s, {L"A=1"}},       // no NUL after B: cut off
        {L""s, {}},
    };
    for (const auto& [block, entries] : cases) {
        EXPECT_EQ(splitEnvironmentBlock(block), entries);
    }
}

} // namespace
} // namespace corvandell
