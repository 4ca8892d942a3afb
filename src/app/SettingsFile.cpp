// settings.json: the fixed 17-line writer and the key-scanner reader.
//
// The reader never rejects a file. Each field is looked up on its own, so a damaged or
// hand-edited file keeps every value the scanners still find and defaults the rest; the
// load then saves straight back, which rewrites any partial file complete. That save goes
// through the file's guard: a damaged original is kept beside it first, and a file that
// could not be read is not written at all.
#include "app/SettingsFile.hpp"

#include "api/JsonText.hpp"

namespace corvandell {

namespace {

constexpr std::string_view kSettingsFileName = "settings.json";

void readStringField(const std::string& text, std::string_view key, std::string& field) {
    if (hasKey(text, key)) {
        field = readString(text, key);
    }
}

const char* boolText(bool value) {
    return value ? "true" : "false";
}

std::string formatStringMap(const std::map<std::string, std::string>& entries) {
    std::string out;
    for (const auto& [name, value] : entries) {
        if (!out.empty()) {
            out += ',';
        }
        out += "\"" + escapeBodyString(name) + "\":\"" + escapeBodyString(value) + "\"";
    }
    return out;
}

} // namespace

Settings defaultSettings(const std::filesystem::path& defaultLibraryFolder) {
    Settings settings;
    settings.libraryPath = defaultLibraryFolder;
    return settings;
}

std::string formatSettings(const Settings& settings) {
    std::string out = "{\n\"apiBaseUrl\":\"";
    out += escapeBodyString(settings.apiBaseUrl);
    out += "\",\n\"bearerToken\":\"";
    out += escapeBodyString(settings.bearerToken);
    out += "\",\n\"refreshToken\":\"";
    out += escapeBodyString(settings.refreshToken);
    out += "\",\n\"username\":\"";
    out += escapeBodyString(settings.username);
    out += "\",\n\"libraryPath\":\"";
    out += escapeBodyString(pathToUtf8(settings.libraryPath));
    out += "\",\n\"downloadLimitKbps\":";
    out += std::to_string(settings.downloadLimitKbps);
    out += ",\n\"voiceEnabled\":";
    out += boolText(settings.voiceEnabled);
    out += ",\n\"voiceMuteByDefault\":";
    out += boolText(settings.voiceMuteByDefault);
    out += ",\n\"voiceInputVolume\":";
    out += std::to_string(settings.voiceInputVolume);
    out += ",\n\"voiceOutputVolume\":";
    out += std::to_string(settings.voiceOutputVolume);
    out += ",\n\"voiceInputDevice\":\"";
    out += escapeBodyString(settings.voiceInputDevice);
    out += "\",\n\"voiceOutputDevice\":\"";
    out += escapeBodyString(settings.voiceOutputDevice);
    out += "\",\n\"skinId\":\"";
    out += escapeBodyString(settings.skinId);
    out += "\",\n\"overlayHintShown\":";
    out += boolText(settings.overlayHintShown);
    out += ",\n\"webGameBrowsers\":{";
    out += formatStringMap(settings.webGameBrowsers);
    out += "}\n}\n";
    return out;
}

Settings parseSettings(const std::string& text, const std::filesystem::path& defaultLibraryFolder) {
    Settings settings = defaultSettings(defaultLibraryFolder);
    // An empty address would leave the client with no service at all.
    if (std::string apiBaseUrl = readString(text, "apiBaseUrl"); !apiBaseUrl.empty()) {
        settings.apiBaseUrl = std::move(apiBaseUrl);
    }
    readStringField(text, "bearerToken", settings.bearerToken);
    readStringField(text, "refreshToken", settings.refreshToken);
    readStringField(text, "username", settings.username);
    // An empty games root would install into whatever the working directory happens to be.
    if (const std::string libraryPath = readString(text, "libraryPath"); !libraryPath.empty()) {
        try {
            settings.libraryPath = pathFromUtf8(libraryPath);
        } catch (const std::filesystem::filesystem_error&) {
            // Not UTF-8 (a damaged file on Windows, where paths are converted): keep the default.
        }
    }
    settings.downloadLimitKbps = readInt(text, "downloadLimitKbps", settings.downloadLimitKbps);
    settings.voiceEnabled = readBool(text, "voiceEnabled", settings.voiceEnabled);
    settings.voiceMuteByDefault = readBool(text, "voiceMuteByDefault", settings.voiceMuteByDefault);
    settings.voiceInputVolume = readInt(text, "voiceInputVolume", settings.voiceInputVolume);
    settings.voiceOutputVolume = readInt(text, "voiceOutputVolume", settings.voiceOutputVolume);
    readStringField(text, "voiceInputDevice", settings.voiceInputDevice);
    readStringField(text, "voiceOutputDevice", settings.voiceOutputDevice);
    readStringField(text, "skinId", settings.skinId);
    settings.overlayHintShown = readBool(text, "overlayHintShown", settings.overlayHintShown);
    settings.webGameBrowsers = readStringMap(text, "webGameBrowsers");
    return settings;
}

GuardedFile settingsFileIn(const std::filesystem::path& dataFolder) {
    return GuardedFile(dataFolder / kSettingsFileName, kMaxSettingsBytes);
}

Settings loadSettings(GuardedFile& file, const std::filesystem::path& defaultLibraryFolder) {
    Settings settings = parseSettings(file.load(), defaultLibraryFolder);
    saveSettings(file, settings);
    return settings;
}

bool saveSettings(GuardedFile& file, const Settings& settings) {
    return file.save(formatSettings(settings));
}

} // namespace corvandell
