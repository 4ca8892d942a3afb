// itch.io games installed by the itch app.
//
// Reads: every folder under %APPDATA%\itch\apps holding .itch\receipt.json.gz (gzip around
// JSON) or, from older versions of the app, a plain .itch\receipt.json; from the receipt's
// "game" object "id" (a number, the store id), "title" and "classification" (anything but
// "game", such as tools and soundtracks, is left out). Rows carry no launch address: the
// app starts games directly, so the row's executable is chosen in the folder.
//
// Receipts are written by a JSON library, so the title is decoded in full (\u0026, surrogate
// pairs), and a receipt is inflated only when its content stays under the store-file cap.
#include "stores/BoundedGunzip.hpp"
#include "stores/FolderWalk.hpp"
#include "stores/JsonStrings.hpp"
#include "stores/StoreFiles.hpp"
#include "stores/StoreRow.hpp"
#include "stores/StoreScanners.hpp"

#include "api/JsonText.hpp"

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

Receipt readReceipt(const std::filesystem::path& folder) {
    const auto itch = folder / ".itch";
    if (isExistingFile(itch / "receipt.json.gz")) {
        const auto bytes = readStoreFile(itch / "receipt.json.gz");
        if (!bytes) {
            return {std::nullopt, storeFileProblem(itch / "receipt.json.gz", kMaxStoreFileBytes, false)};
        }
        auto gunzipped = gunzipUpTo(*bytes, kMaxStoreFileBytes);
        switch (gunzipped.problem) {
        case GunzipProblem::NotGzip:
            return {std::nullopt, "receipt.json.gz is not a gzip file"};
        case GunzipProblem::TooLarge:
            return {std::nullopt,
                    "receipt.json.gz inflates to more than " + megabytesText(kMaxStoreFileBytes)};
        case GunzipProblem::Damaged:
            return {std::nullopt, "receipt.json.gz is damaged"};
        case GunzipProblem::None:
            break;
        }
        std::string json = decodeStoreText(*gunzipped.content);
        if (!isValidUtf8(json)) {
            return {std::nullopt, "receipt.json.gz is not UTF-8 or UTF-16 text"};
        }
        return {std::move(json), {}};
    }
    if (isExistingFile(itch / "receipt.json")) {
        auto json = readStoreText(itch / "receipt.json");
        return json ? Receipt{std::move(json), {}}
                    : Receipt{std::nullopt, storeFileProblem(itch / "receipt.json")};
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
    std::string title = readDecodedString(game, "title");
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
    for (const auto& folder : listSubfolders(*appData / "itch" / "apps", skipNote(report, kStoreName))) {
        scanAppFolder(folder, report);
    }
}

} // namespace corvandell
