// Fuzzes the well-formedness check our files go through at start. Besides faults, three
// findings trap: an offset past the text, a text called cut short anywhere but at its end,
// and a whole value that stops being whole inside brackets (the check must agree with
// itself about what a value is).
#include "api/JsonWellFormed.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const corvandell::JsonCheck check = corvandell::checkJsonWellFormed(text);
    if (check.offset > size || (check.shape == corvandell::JsonShape::CutShort && check.offset != size)) {
        __builtin_trap();
    }
    if (check.shape == corvandell::JsonShape::WellFormed && !text.starts_with("\xEF\xBB\xBF")) {
        const std::string wrapped = "[" + std::string(text) + "]";
        if (corvandell::checkJsonWellFormed(wrapped, corvandell::kMaxJsonDepth + 1).shape !=
            corvandell::JsonShape::WellFormed) {
            __builtin_trap();
        }
    }
    return 0;
}
