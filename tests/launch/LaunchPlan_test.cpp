#include "launch/LaunchPlan.hpp"

#include <gtest/gtest.h>

namespace corvandell {
namespace {

TEST(LaunchPlan, EachKindOfRowStartsTheWayItsStoreAllowsWithItsOwnStatusTexts) {
    const std::string riot = R"("D:\Riot Client\RiotClientServices.exe" --launch-product=valorant)";
    const struct {
        LaunchSubject subject;
        LaunchWay way;
        const char* shellFile;
        const char* shellParameters;
        const char* shellStatus;
        const char* nothingStatus;
    } cases[] = {
        {{.title = "Sky Harbor", .steamAppId = "104900", .executablePath = "C:/S/common/Sky/Sky.exe"},
         LaunchWay::Direct,
         "steam://rungameid/104900",
         "",
         "Launched Sky Harbor via Steam (no executable found; the Steam overlay may appear).",
         "Could not find anything to launch for Sky Harbor. Start it from Steam."},
        {{.title = "Sky Harbor", .steamAppId = "104900"},
         LaunchWay::Shell,
         "steam://rungameid/104900",
         "",
         "Launched Sky Harbor via Steam (no executable found; the Steam overlay may appear).",
         "Could not find anything to launch for Sky Harbor. Start it from Steam."},
        {{.title = "Lantern",
          .storeKey = "epic",
          .storeName = "Epic Games",
          .storeCommand = "com.epicgames.launcher://apps/Finch?action=launch&silent=true"},
         LaunchWay::Shell,
         "com.epicgames.launcher://apps/Finch?action=launch&silent=true",
         "",
         "Launched Lantern via Epic Games (no executable found; exit tracking and the overlay are "
         "unavailable).",
         "Could not find anything to launch for Lantern. Start it from Epic Games."},
        {{.title = "Lantern",
          .executablePath = "C:\\G\\L.exe",
          .storeKey = "epic",
          .storeName = "Epic Games",
          .storeCommand = "com.epicgames.launcher://apps/Finch"},
         LaunchWay::Direct,
         "com.epicgames.launcher://apps/Finch",
         "",
         "Launched Lantern via Epic Games (no executable found; exit tracking and the overlay are "
         "unavailable).",
         "Could not find anything to launch for Lantern. Start it from Epic Games."},
        // A game that needs its client goes through it even with an executable.
        {{.title = "VALORANT",
          .executablePath = "C:\\R\\V.exe",
          .storeKey = "riot",
          .storeName = "Riot Games",
          .storeCommand = riot},
         LaunchWay::Shell,
         "D:\\Riot Client\\RiotClientServices.exe",
         "--launch-product=valorant",
         "Launched VALORANT via Riot Games (no executable found; exit tracking and the overlay are "
         "unavailable).",
         "Could not find anything to launch for VALORANT. Start it from Riot Games."},
        {{.title = "Rift", .storeKey = "gog", .storeName = "GOG Galaxy"},
         LaunchWay::Nothing,
         "",
         "",
         "",
         "Could not find anything to launch for Rift. Start it from GOG Galaxy."},
        {{.title = "Ember Keep", .executablePath = "C:/Lib/Ember Keep/bin/ember.exe"},
         LaunchWay::Direct,
         "",
         "",
         "",
         "Could not find anything to launch for Ember Keep. Start it from Corvandell."},
    };
    for (const auto& [subject, way, shellFile, shellParameters, shellStatus, nothingStatus] : cases) {
        const LaunchPlan plan = planLaunch(subject);
        EXPECT_EQ(plan.way, way) << subject.title;
        EXPECT_EQ(plan.shell.file, shellFile) << subject.title;
        EXPECT_EQ(plan.shell.parameters, shellParameters) << subject.title;
        EXPECT_EQ(plan.shellStatus, shellStatus) << subject.title;
        EXPECT_EQ(plan.nothingStatus, nothingStatus) << subject.title;
        EXPECT_EQ(plan.steamAppId, way == LaunchWay::Direct ? subject.steamAppId : "") << subject.title;
    }
}

TEST(LaunchPlan, ADirectStartRunsInTheExecutablesFolderAndFollowsTheInstallFolder) {
    const LaunchPlan plan = planLaunch({.title = "Ember Keep",
                                        .executablePath = "C:/Lib/Ember Keep/bin/ember.exe",
                                        .installPath = "C:/Lib/Ember Keep"});
    EXPECT_EQ(plan.executablePath, "C:/Lib/Ember Keep/bin/ember.exe");
    EXPECT_EQ(plan.workingFolder, "C:/Lib/Ember Keep/bin");
    EXPECT_EQ(plan.followFolder, "C:/Lib/Ember Keep");
}

TEST(LaunchPlan, ACommandLineSplitsAfterItsQuotedProgram) {
    const struct {
        const char* command;
        const char* file;
        const char* parameters;
    } cases[] = {
        {R"("C:\A B\c.exe" --x "y z")", R"(C:\A B\c.exe)", R"(--x "y z")"},
        {R"("C:\unterminated)", R"(C:\unterminated)", ""},
        {"uplay://launch/635", "uplay://launch/635", ""},
    };
    for (const auto& [command, file, parameters] : cases) {
        const ShellCommand split = splitShellCommand(command);
        EXPECT_EQ(split.file, file) << command;
        EXPECT_EQ(split.parameters, parameters) << command;
    }
}

} // namespace
} // namespace corvandell
