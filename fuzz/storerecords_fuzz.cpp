// Fuzzes the readers of the other stores' binary and XML records: the protocol-buffers
// reader Battle.net's product.db goes through, and the XML tag scanner of the Xbox and EA
// manifests. The first input byte picks the reader, so one corpus serves both. Besides
// faults, a field or element reaching outside the input traps.
#include "stores/ProtobufReader.hpp"
#include "stores/XmlText.hpp"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

bool isInside(std::string_view part, std::string_view whole) {
    return part.empty() ||
           (part.data() >= whole.data() && part.data() + part.size() <= whole.data() + whole.size());
}

void readMessage(std::string_view message, int depth) {
    corvandell::ProtobufReader reader(message);
    while (const auto field = reader.next()) {
        if (!isInside(field->bytes, message)) {
            __builtin_trap();
        }
        if (depth < 4 && field->wireType == corvandell::ProtobufWireType::LengthDelimited) {
            readMessage(field->bytes, depth + 1);
        }
    }
}

void readXml(std::string_view xml) {
    for (const char* name : {"Identity", "Executable", "gameTitle", "contentID", "filePath"}) {
        for (const auto& element : corvandell::findXmlElements(xml, name)) {
            if (!isInside(element.attributes, xml) || !isInside(element.content, xml)) {
                __builtin_trap();
            }
            corvandell::xmlAttribute(element, "Name");
            corvandell::xmlText(element);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string_view input(reinterpret_cast<const char*>(data) + 1, size - 1);
    if (data[0] & 1) {
        readMessage(input, 0);
    } else {
        readXml(input);
    }
    return 0;
}
