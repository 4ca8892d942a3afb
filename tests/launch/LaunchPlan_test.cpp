#include "launch/LaunchPlan.hpp"

#include <gtest/gtest.h>

namespace corvandell {
namespace {

TEST(LaunchPlan, EachKindOfRowStartsTheWayItsStoreAllows) {
    const std::string riot = R"("D:\Riot Client\RiotClientServices.exe" --launch-product=valorant)";
    const struct {
        LaunchSubject subject;
        LaunchWay way;
        const char* shellFile;
        const char* shellParameters;
    } cases[] = {
        {{.title = "Sky", .steamAppId = "104900", .executablePath = "C:/S/Sky.exe"},
         LaunchWay::Direct,
         "steam://rungameid/104900",
         ""},
        {{.title = "Sky", .steamAppId = "104900"}, LaunchWay::Shell, "steam://rungameid/104900", ""},
        {{.title = "L", .storeKey = "epic", .storeCommand = "com.epicgames.launcher://apps/Finch"},
         LaunchWay::Shell,
         "com.epicgames.launcher://apps/Finch",
         ""},
        {{.title = "L", .executablePath = "C:\\G\\L.exe", .storeKey = "epic", .storeCommand = "epic://x"},
         LaunchWay::Direct,
         "epic://x",
         ""},
        // A game that needs its client goes through it even with an executable.
        {{.title = "V", .executablePath = "C:\\R\\V.exe", .storeKey = "riot", .storeCommand = riot},
         LaunchWay::Shell,
         "D:\\Riot Client\\RiotClientServices.exe",
         "--launch-product=valorant"},
        {{.title = "Rift", .storeKey = "gog"}, LaunchWay::Nothing, "", ""},
        {{.title = "Ember Keep", .executablePath = "C:/Lib/Ember Keep/bin/ember.exe"},
         LaunchWay::Direct,
         "",
         ""},
    };
    for (const auto& [subject, way, shellFile, shellParameters] : cases) {
        const LaunchPlan plan = planLaunch(subject);
        EXPECT_EQ(plan.way, way) << subject.title;
        EXPECT_EQ(plan.shell.file, shellFile) << subject.title;
        EXPECT_EQ(plan.shell.parameters, shellParameters) << subject.title;
        EXPECT_EQ(plan.steamAppId, way == LaunchWay::Direct ? subject.steamAppId : "") << subject.title;
    }
}

TEST(LaunchPlan, StatusTextsNameTheStoreThatStartsTheGame) {
    const LaunchPlan steam = planLaunch({.title = "Sky Harbor", .steamAppId = "104900"});
    EXPECT_EQ(steam.shellStatus,
              "Launched Sky Harbor via Steam (no executable found; the Steam overlay may appear).");
    EXPECT_EQ(steam.nothingStatus, "Could not find anything to launch for Sky Harbor. Start it from Steam.");
    const LaunchPlan store = planLaunch(
        {.title = "Lantern", .storeKey = "epic", .storeName = "Epic Games", .storeCommand = "epic://x"});
    EXPECT_EQ(store.shellStatus, "Launched Lantern via Epic Games (no executable found; exit tracking and "
                                 "the overlay are unavailable).");
    EXPECT_EQ(store.nothingStatus,
              "Could not find anything to launch for Lantern. Start it from Epic Games.");
    const LaunchPlan own = planLaunch({.title = "Ember Keep", .executablePath = "C:/E/ember.exe"});
    EXPECT_EQ(own.shellStatus, "");
    EXPECT_EQ(own.nothingStatus,
              "Could not find anything to launch for Ember Keep. Start it from Corvandell.");
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
