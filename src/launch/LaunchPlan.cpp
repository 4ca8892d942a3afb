#include "launch/LaunchPlan.hpp"

#include "base/Utf8Path.hpp"

namespace corvandell {
namespace {

bool needsStoreClient(const std::string& storeKey) {
    return storeKey == "riot" || storeKey == "battlenet" || storeKey == "rockstar";
}

std::string trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

} // namespace

ShellCommand splitShellCommand(const std::string& command) {
    const std::string text = trimmed(command);
    if (!text.starts_with('"')) {
        return ShellCommand{text, {}};
    }
    const size_t close = text.find('"', 1);
    if (close == std::string::npos) {
        return ShellCommand{text.substr(1), {}};
    }
    return ShellCommand{text.substr(1, close - 1), trimmed(text.substr(close + 1))};
}

LaunchPlan planLaunch(const LaunchSubject& subject) {
    LaunchPlan plan;
    plan.followFolder = subject.installPath;
    const bool isSteam = !subject.steamAppId.empty();
    const std::string storeName = isSteam                     ? std::string("Steam")
                                  : subject.storeName.empty() ? std::string("Corvandell")
                                                              : subject.storeName;
    plan.nothingStatus =
        "Could not find anything to launch for " + subject.title + ". Start it from " + storeName + ".";
    if (isSteam) {
        plan.shell = ShellCommand{"steam://rungameid/" + subject.steamAppId, {}};
        plan.shellStatus =
            "Launched " + subject.title + " via Steam (no executable found; the Steam overlay may appear).";
    } else if (!subject.storeCommand.empty()) {
        plan.shell = splitShellCommand(subject.storeCommand);
        plan.shellStatus = "Launched " + subject.title + " via " + storeName +
                           " (no executable found; exit tracking and the overlay are unavailable).";
    }
    const bool mustUseStore = !plan.shell.file.empty() && !isSteam &&
                              (needsStoreClient(subject.storeKey) || subject.storeCommand.starts_with('"'));
    if (!subject.executablePath.empty() && !mustUseStore) {
        plan.way = LaunchWay::Direct;
        plan.executablePath = subject.executablePath;
        plan.workingFolder = pathToUtf8(pathFromUtf8(subject.executablePath).parent_path());
        plan.steamAppId = subject.steamAppId;
        return plan;
    }
    plan.way = plan.shell.file.empty() ? LaunchWay::Nothing : LaunchWay::Shell;
    return plan;
}

} // namespace corvandell
