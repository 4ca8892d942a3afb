#include "app/RowText.hpp"

#include <cstdio>

namespace corvandell {
namespace {

bool isHosted(const LibraryItem& row) {
    return row.browserGame && row.browserGame->launchTarget.starts_with("https://");
}

const char* trackingText(int state) {
    switch (state) {
    case 1:
        return "Launching...";
    case 2:
        return "Running";
    case 3:
        return "Stopping...";
    default:
        return "";
    }
}

std::string browserStateText(const LibraryItem& row) {
    if (isHosted(row)) {
        return "Web (hosted)";
    }
    return row.isInstalled() ? "Web (ready)" : "Web (not downloaded yet)";
}

std::string detailsStateText(const LibraryItem& row, const TrackedGame& tracked) {
    if (tracked.isTracking(row)) {
        return trackingText(tracked.state);
    }
    if (row.isBrowserGame()) {
        return browserStateText(row);
    }
    if (row.isInstalled()) {
        return row.isSteamRow() ? "Installed (Steam)" : "Installed";
    }
    return row.entitlement ? "Owned" : "Store";
}

} // namespace

RowAction actionFor(const LibraryItem& row) {
    if (row.isBrowserGame()) {
        return isHosted(row) || row.isInstalled() ? RowAction::Launch : RowAction::Install;
    }
    if (row.isSteamRow() || row.isStoreRow()) {
        return row.isInstalled() ? RowAction::Launch : RowAction::None;
    }
    if (!row.isInstalled()) {
        return RowAction::Install;
    }
    if (row.latestVersion.empty() || row.installedVersion() == row.latestVersion) {
        return RowAction::Launch;
    }
    return RowAction::Update;
}

std::string actionLabel(const LibraryItem& row, const TrackedGame& tracked) {
    if (tracked.isTracking(row)) {
        return tracked.state == 3 ? "Stopping..." : "Stop";
    }
    switch (actionFor(row)) {
    case RowAction::Install:
        return "Install";
    case RowAction::Update:
        return "Update";
    default:
        return "Launch";
    }
}

std::string stateText(const LibraryItem& row, const TrackedGame& tracked) {
    if (tracked.isTracking(row)) {
        return trackingText(tracked.state);
    }
    if (row.isBrowserGame()) {
        return isHosted(row) ? "Web (hosted)" : "Web (ready)";
    }
    if (row.isStoreRow()) {
        return row.store->storeName;
    }
    if (row.isInstalled()) {
        return row.isSteamRow() ? "Steam" : "Installed";
    }
    return row.entitlement ? "Owned" : "Store";
}

std::string ratingText(const RatingSummary& rating) {
    if (rating.count <= 0) {
        return {};
    }
    char number[64] = {};
    std::snprintf(number, sizeof(number), " %.1f (%d)", rating.average, rating.count);
    return "\xE2\x98\x85" + std::string(number); // U+2605 BLACK STAR
}

RowTextClass textClassOf(const LibraryItem& row) {
    if (row.isInstalled()) {
        return RowTextClass::Installed;
    }
    if (row.entitlement || row.isBrowserGame()) {
        return RowTextClass::OwnedOrBrowser;
    }
    return RowTextClass::Other;
}

std::string detailsText(const LibraryItem& row, const TrackedGame& tracked) {
    std::string text = row.name;
    if (!row.description.empty()) {
        text += "\r\n\r\n" + row.description;
    }
    text += "\r\n\r\nCategory: " + row.category;
    text += "\r\nPlatform: " + row.platform;
    text += "\r\nState: " + detailsStateText(row, tracked);
    const bool isCatalogueRow = !row.isSteamRow() && !row.isStoreRow() && !row.isBrowserGame();
    if (isCatalogueRow && !row.tags.empty()) {
        text += "\r\nTags: ";
        for (size_t i = 0; i < row.tags.size(); ++i) {
            text += (i == 0 ? "" : ", ") + row.tags[i];
        }
    }
    if (isCatalogueRow && row.isInstalled() && !row.latestVersion.empty() &&
        row.installedVersion() != row.latestVersion) {
        text += "\r\nUpdate available: " + row.installedVersion() + " -> " + row.latestVersion;
    }
    if (row.isSteamRow()) {
        text += "\r\nSteam app id: " + row.steamAppId;
        text += "\r\nLaunches directly (no Steam overlay); Shift+Tab in game opens the Corvandell overlay.";
    }
    if (row.isStoreRow()) {
        text += "\r\n" + row.store->storeName + " id: " + row.store->externalId;
        if (row.install && !row.install->executablePath.empty()) {
            text += "\r\nLaunches directly; Shift+Tab in game opens the Corvandell overlay.";
        } else {
            text += "\r\nLaunches through the " + row.store->storeName + " client.";
        }
    }
    if (row.isBrowserGame() && !row.isInstalled() && !isHosted(row)) {
        text += "\r\nPress Install to download it; it then runs from this computer.";
    }
    if (row.isInstalled()) {
        text += "\r\nInstall path: " + row.install->installPath;
    }
    return text;
}

} // namespace corvandell
