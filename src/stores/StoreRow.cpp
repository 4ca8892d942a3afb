// Row building and XML entity decoding for the store scanners.
#include "stores/StoreRow.hpp"

#include "stores/ExecutableChooser.hpp"
#include "stores/StoreFiles.hpp"

#include <cstdint>

namespace corvandell {

std::string_view storeDisplayName(std::string_view key) {
    for (const auto& provider : storeProviders) {
        if (provider.key == key) {
            return provider.name;
        }
    }
    return {};
}

DetectedGame makeStoreRow(std::string_view key, const std::string& storeId, const std::string& title,
                          const std::filesystem::path& installFolder, const std::filesystem::path& executable,
                          const std::string& launchAddress) {
    const std::string name(storeDisplayName(key));
    DetectedGame row;
    row.key = std::string(key) + ":" + storeId;
    row.title = title;
    row.storeKey = std::string(key);
    row.storeName = name;
    row.externalId = storeId;
    row.description =
        "Detected in your local " + name + " library. Installs and updates are managed by " + name + ".";
    row.installFolder = installFolder;
    row.executable = executable.empty() ? chooseGameExecutable(installFolder, title) : executable;
    row.launchAddress = launchAddress;
    return row;
}

namespace {

// The code point of "#123" or "#x7B"; 0 when the text is not one XML allows.
std::uint32_t numericReference(std::string_view body) {
    if (body.size() < 2 || body[0] != '#') {
        return 0;
    }
    const bool isHex = body[1] == 'x' || body[1] == 'X';
    const std::string_view digits = body.substr(isHex ? 2 : 1);
    if (digits.empty() || digits.size() > 8) {
        return 0;
    }
    std::uint32_t value = 0;
    for (const char c : digits) {
        std::uint32_t digit = 0;
        if (c >= '0' && c <= '9') {
            digit = static_cast<std::uint32_t>(c - '0');
        } else if (isHex && c >= 'a' && c <= 'f') {
            digit = static_cast<std::uint32_t>(c - 'a' + 10);
        } else if (isHex && c >= 'A' && c <= 'F') {
            digit = static_cast<std::uint32_t>(c - 'A' + 10);
        } else {
            return 0;
        }
        value = value * (isHex ? 16u : 10u) + digit;
    }
    const bool isSurrogate = value >= 0xD800 && value <= 0xDFFF;
    return value > 0x10FFFF || isSurrogate ? 0 : value;
}

} // namespace

std::string decodeXmlEntities(std::string_view text) {
    // "#x10FFFF" and a few digits of leading zeros; nothing longer is a reference we decode.
    constexpr size_t kLongestReference = 12;
    static constexpr std::pair<std::string_view, char> kNamed[] = {
        {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        // The ";" is looked for only as far as the longest reference reaches: searching the
        // rest of the text for every "&" made a text of many bare ampersands quadratic.
        const size_t semicolon =
            text[i] == '&' ? text.substr(i + 1, kLongestReference).find(';') : std::string_view::npos;
        const size_t end = semicolon == std::string_view::npos ? semicolon : i + 1 + semicolon;
        if (end == std::string_view::npos) {
            out.push_back(text[i]);
            continue;
        }
        const std::string_view body = text.substr(i + 1, end - i - 1);
        bool decoded = false;
        for (const auto& [name, character] : kNamed) {
            if (body == name) {
                out.push_back(character);
                decoded = true;
            }
        }
        if (const std::uint32_t codePoint = decoded ? 0 : numericReference(body); codePoint != 0) {
            appendUtf8CodePoint(out, codePoint);
            decoded = true;
        }
        if (!decoded) {
            out.push_back(text[i]);
            continue;
        }
        i = end;
    }
    return out;
}

} // namespace corvandell
