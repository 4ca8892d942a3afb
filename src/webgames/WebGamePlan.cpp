#include "webgames/WebGamePlan.hpp"

#include "base/Utf8Path.hpp"
#include "webgames/BrowserChoice.hpp"
#include "webgames/BrowserCommand.hpp"
#include "webgames/RepositoryAddress.hpp"
#include "webgames/WebGameFolders.hpp"

#include <algorithm>

namespace corvandell {
namespace {

WebGamePlan refused(const char* text) {
    WebGamePlan plan;
    plan.step = WebGameStep::Refuse;
    plan.statusText = text;
    return plan;
}

std::wstring wide(const std::string& text) {
    return pathFromUtf8(text).wstring();
}

} // namespace

WebGamePlan planWebGameLaunch(const WebGameSubject& game, const std::filesystem::path& dataFolder,
                              const RepositoryHost& host, const std::function<std::string()>& findChromium) {
    const bool isHosted = game.launchTarget.starts_with("https://");
    if (!isHosted && game.cloneFolder.empty()) {
        return {};
    }
    const std::string browser =
        game.chosenBrowser.empty() ? findChromium() : browserExecutable(game.chosenBrowser);
    if (browser.empty()) {
        return refused(kNoBrowserText);
    }
    WebGamePlan plan;
    plan.step = WebGameStep::Start;
    plan.browser = wide(browser);
    plan.profileFolder = webGameProfileFolder(dataFolder, game.key);
    if (isHosted) {
        // Given exactly as stored: the pages site is the game's own address.
        plan.targetUrl = wide(game.launchTarget);
        if (!readPagesAddress(game.launchTarget, host) || !isSafeOnCommandLine(plan.targetUrl)) {
            return refused(kBadHostedUrlText);
        }
        return plan;
    }
    if (!isValidLaunchFile(game.launchTarget)) {
        return refused(kBadLaunchFileText);
    }
    std::wstring file = wide(game.launchTarget);
    std::replace(file.begin(), file.end(), L'/', L'\\');
    std::wstring folder = game.cloneFolder;
    if (!folder.ends_with(L'\\')) {
        folder += L'\\';
    }
    plan.targetUrl = fileUrl(folder + file);
    if (!isSafeOnCommandLine(plan.targetUrl)) {
        return refused(kBadLaunchFileText);
    }
    plan.workingFolder = game.cloneFolder;
    return plan;
}

} // namespace corvandell
