// Fuzzes the KeyValues reader Steam's files go through. Besides faults, two findings trap:
// an object nested deeper than the cap, and a tree holding more text than the input had
// (decoding escapes only ever shortens text, so more means bytes were invented).
#include "stores/KeyValues.hpp"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

std::size_t textIn(const corvandell::KeyValuesNode& node, std::size_t depth) {
    if (node.isObject && depth >= corvandell::kMaxKeyValuesDepth) {
        __builtin_trap();
    }
    std::size_t total = node.value.size();
    for (const auto& entry : node.entries) {
        total += entry.key.size() + textIn(entry.node, depth + 1);
    }
    return total;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const corvandell::KeyValuesNode root = corvandell::parseKeyValues(text);
    if (textIn(root, 0) > size) {
        __builtin_trap();
    }
    if (const auto* first = root.firstObject()) {
        first->text("appid");
        first->find("UserConfig");
    }
    return 0;
}
