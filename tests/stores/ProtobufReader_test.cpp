// Each kind of damage stops the reading with its own reason and keeps what came before.
#include "stores/ProtobufReader.hpp"

#include <gtest/gtest.h>

#include <string>

namespace corvandell {
namespace {

std::string fromHex(std::string_view hex) {
    std::string bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 3) {
        bytes += static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16));
    }
    return bytes;
}

TEST(ProtobufReader, ReadsEveryWireTypeAndStopsAtDamageWithItsReason) {
    using enum ProtobufStop;
    const struct {
        std::string_view hex;
        std::string fields; // "number=value" or "number='bytes'", space-separated
        ProtobufStop stop;
    } cases[] = {
        {"", "", End},
        {"0A 03 61 62 63 15 01 00 00 80 19 01 02 03 04 05 06 07 08 ",
         "1='abc' 2=2147483649 3=578437695752307201", End},
        {"08 FF FF FF FF FF FF FF FF FF 01 ", "1=18446744073709551615", End},
        {"08 01 0A 05 61 ", "1=1", Truncated},
        {"0D 01 02 03 ", "", Truncated},
        {"0A FF FF FF FF FF FF FF FF 7F ", "", Truncated},
        {"08 FF FF FF FF FF FF FF FF FF FF 01 ", "", BadVarint},
        {"00 01 ", "", BadFieldTag},
        {"08 01 0B ", "1=1", BadWireType},
    };
    for (const auto& [hex, expected, stop] : cases) {
        const std::string message = fromHex(hex);
        ProtobufReader reader(message);
        std::string fields;
        while (const auto field = reader.next()) {
            fields +=
                (fields.empty() ? "" : " ") + std::to_string(field->number) + "=" +
                (field->wireType == ProtobufWireType::LengthDelimited ? "'" + std::string(field->bytes) + "'"
                                                                      : std::to_string(field->value));
        }
        EXPECT_EQ(fields, expected) << hex;
        EXPECT_EQ(reader.stop(), stop) << hex;
        EXPECT_EQ(reader.isDamaged(), stop != End) << hex;
        EXPECT_EQ(reader.next(), std::nullopt) << hex;
    }
}

} // namespace
} // namespace corvandell
