#include "launch/SteamEnvironment.hpp"

namespace corvandell {

std::vector<std::wstring> splitEnvironmentBlock(std::wstring_view block) {
    std::vector<std::wstring> entries;
    size_t start = 0;
    while (start < block.size() && block[start] != L'\0') {
        const size_t end = block.find(L'\0', start);
        if (end == std::wstring_view::npos) {
            break; // an entry without its NUL was cut off
        }
        entries.emplace_back(block.substr(start, end - start));
        start = end + 1;
    }
    return entries;
}

std::wstring steamEnvironmentBlock(const std::vector<std::wstring>& entries, std::wstring_view appId) {
    std::wstring block;
    const auto append = [&block](std::wstring_view entry) {
        block += entry;
        block += L'\0';
    };
    for (const std::wstring& entry : entries) {
        append(entry);
    }
    append(std::wstring(L"SteamAppId=") + std::wstring(appId));
    append(std::wstring(L"SteamGameId=") + std::wstring(appId));
    append(L"SteamNoOverlayUIDrawing=1");
    block += L'\0';
    return block;
}

} // namespace corvandell
