// itch.io games installed by the itch app.
//
// Reads: every folder under %APPDATA%\itch\apps holding .itch\receipt.json.gz (gzip around
// JSON) or, from older versions of the app, a plain .itch\receipt.json; from the receipt's
// "game" object "id" (a number, the store id), "title" and "classification" (anything but
// "game", such as tools and soundtracks, is left out). Rows carry no launch address: the
// app starts games directly, so the row's executable is chosen in the folder.
#include "stores/StoreFiles.hpp"
#include "stores/StoreFolders.hpp"
#include "stores/StoreRow.hpp"
#include "stores/StoreScanners.hpp"

#include "api/JsonText.hpp"
#include "webgames/git/Gzip.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace corvandell {

namespace {

constexpr std::string_view kStoreKey = "itch";
constexpr std::string_view kStoreName = "itch.io";

struct Receipt {
    std::optional<std::string> json;
    std::string problem; // why there is no JSON
};

// gzip keeps the content's length in its last four bytes; refusing a huge one up front keeps
// a damaged or hostile receipt from being inflated into memory at all.
bool claimsHugeContent(std::string_view gzip) {
    if (gzip.size() < 4) {
        return false;
    }
    std::uint32_t size = 0;
    for (std::size_t i = gzip.size(); i-- > gzip.size() - 4;) {
        size = (size << 8) | static_cast<std::uint8_t>(gzip[i]);
    }
    return size > kMaxStoreFileBytes;
}

Receipt readReceipt(const std::filesystem::path& folder) {
    const auto itch = folder / ".itch";
    if (isExistingFile(itch / "receipt.json.gz")) {
        const auto bytes = readStoreFile(itch / "receipt.json.gz");
        if (!bytes) {
            return {std::nullopt, "receipt.json.gz could not be read"};
        }
        if (!bytes->starts_with("\x1F\x8B")) {
            return {std::nullopt, "receipt.json.gz is not a gzip file"};
        }
        auto json = claimsHugeContent(*bytes) ? std::nullopt : git::gunzip(*bytes);
        if (!json) {
            return {std::nullopt, "receipt.json.gz is damaged"};
        }
        return {decodeStoreText(*json), {}};
    }
    if (isExistingFile(itch / "receipt.json")) {
        auto json = readStoreText(itch / "receipt.json");
        return json ? Receipt{std::move(json), {}} : Receipt{std::nullopt, "receipt.json could not be read"};
    }
    return {std::nullopt, "no .itch receipt"};
}

// The object after the "game" key; "" when there is none.
std::string gameObject(const std::string& json) {
    static constexpr std::string_view kKey = "\"game\"";
    for (size_t at = json.find(kKey); at != std::string::npos; at = json.find(kKey, at + 1)) {
        const size_t colon = json.find_first_not_of(" \t\r\n", at + kKey.size());
        if (colon == std::string::npos || json[colon] != ':') {
            continue;
        }
        const size_t brace = json.find_first_not_of(" \t\r\n", colon + 1);
        if (brace == std::string::npos || json[brace] != '{') {
            continue;
        }
        const auto objects = splitObjects(std::string_view(json).substr(brace));
        return objects.empty() ? std::string() : objects.front();
    }
    return {};
}

void scanAppFolder(const std::filesystem::path& folder, ScanReport& report) {
    auto skip = [&](std::string reason) {
        report.skip(std::string(kStoreName), utf8Text(folder), std::move(reason));
    };
    const Receipt receipt = readReceipt(folder);
    if (!receipt.json) {
        return skip(receipt.problem);
    }
    const std::string game = gameObject(*receipt.json);
    if (game.empty()) {
        return skip("the receipt has no game object");
    }
    if (hasKey(game, "classification")) {
        if (const std::string kind = readString(game, "classification"); kind != "game") {
            return skip("classified as \"" + kind + "\", not a game");
        }
    }
    const std::int64_t id = readInt64(game, "id", 0);
    if (id <= 0) {
        return skip("the receipt names no game id");
    }
    std::string title = readString(game, "title");
    if (title.empty()) {
        title = utf8Text(folder.filename());
    }
    report.games.push_back(makeStoreRow(kStoreKey, std::to_string(id), title, folder, {}, ""));
}

} // namespace

void scanItchGames(const StoreHost& host, ScanReport& report) {
    const auto appData = host.environment.folderVariable("APPDATA");
    if (!appData) {
        return;
    }
    for (const auto& folder : listSubfolders(*appData / "itch" / "apps")) {
        scanAppFolder(folder, report);
    }
}

} // namespace corvandell
