// The byte budget against packs and streams that zlib compresses far past what a hand-made
// stored block could: each limit is met exactly and missed by one byte, the hostile
// shapes (a lying header, a run of zeros, a delta of copies) are refused with the budget's
// own reason, nothing throws, and the process's peak memory, read back from the kernel,
// shows the refused bytes were never taken.
#include "webgames/git/Inflate.hpp"
#include "webgames/git/Packfile.hpp"

#include "support/PackWriter.hpp"
#include "support/posix/ZlibDeflate.hpp"
#include "webgames/git/Sha1.hpp"

#include <gtest/gtest.h>
#include <zlib.h>

#include <fstream>
#include <functional>
#include <new>
#include <string>
#include <vector>

namespace corvandell::git {
namespace {

constexpr std::size_t kMiB = std::size_t{1} << 20;
// Far below the hundreds of megabytes any of the refused inputs would take if decoded.
constexpr long kMaxPeakRiseKb = 48 * 1024;

// Deflates `zeros` zero bytes a megabyte at a time, so making a stream that expands to
// gigabytes never holds them.
std::string zlib_of_zeros(std::size_t zeros) {
    z_stream stream{};
    EXPECT_EQ(deflateInit(&stream, 9), Z_OK);
    const std::string chunk(kMiB, '\0');
    std::string out;
    std::string buffer(64 * 1024, '\0');
    for (std::size_t left = zeros;;) {
        const std::size_t now = std::min(left, kMiB);
        left -= now;
        stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(chunk.data()));
        stream.avail_in = static_cast<uInt>(now);
        const int flush = left == 0 ? Z_FINISH : Z_NO_FLUSH;
        int status = Z_OK;
        do {
            stream.next_out = reinterpret_cast<Bytef*>(buffer.data());
            stream.avail_out = static_cast<uInt>(buffer.size());
            status = deflate(&stream, flush);
            out.append(buffer.data(), buffer.size() - stream.avail_out);
        } while (stream.avail_out == 0 || (flush == Z_FINISH && status != Z_STREAM_END));
        if (left == 0) {
            break;
        }
    }
    deflateEnd(&stream);
    return out;
}

// The kernel's high-water mark of this process's resident memory, reset by writing 5 to
// clear_refs, so each case sees only its own peak.
long peak_resident_kb() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmHWM:", 0) == 0) {
            return std::stol(line.substr(6));
        }
    }
    return -1;
}

void reset_peak_resident() {
    std::ofstream("/proc/self/clear_refs") << "5";
}

long peak_rise_kb(const std::function<void()>& work) {
    reset_peak_resident();
    const long before = peak_resident_kb();
    work();
    return peak_resident_kb() - before;
}

ByteLimits limits_of(std::uint64_t maxObject, std::uint64_t maxTotal = kMaxTotalBytes) {
    ByteLimits limits;
    limits.maxObjectBytes = maxObject;
    limits.maxTotalBytes = maxTotal;
    return limits;
}

TEST(ByteBudgetZlib, InflateStopsAtItsOutputLimitWithoutTakingTheRest) {
    const std::string zeros1M = zlib_of_zeros(kMiB);
    const std::string zeros256M = zlib_of_zeros(256 * kMiB);
    std::string noise(300000, '\0');
    for (std::size_t i = 0; i < noise.size(); ++i) {
        noise[i] = static_cast<char>((i * 2654435761u) >> 13);
    }
    const std::string stored = test::deflate_with_zlib(noise, 0);
    struct Case {
        const char* what;
        const std::string& stream;
        std::size_t sizeHint;
        std::size_t limit;
        InflateError expected;
    };
    const std::vector<Case> cases = {
        {"1 MiB of matches at a 1 MiB limit", zeros1M, kMiB, kMiB, InflateError::None},
        {"1 MiB of matches one byte over", zeros1M, kMiB, kMiB - 1, InflateError::TooLarge},
        {"stored blocks at their limit", stored, 0, noise.size(), InflateError::None},
        {"stored blocks one byte over", stored, 0, noise.size() - 1, InflateError::TooLarge},
        {"256 MiB of matches at a 1 MiB limit", zeros256M, 0, kMiB, InflateError::TooLarge},
        {"a 1 TiB hint at a 1 MiB limit", zeros256M, std::size_t{1} << 40, kMiB, InflateError::TooLarge},
    };
    for (const Case& test : cases) {
        InflateError error = InflateError::OutOfMemory;
        std::optional<Inflated> result;
        const long rise =
            peak_rise_kb([&] { result = inflate_zlib(test.stream, test.sizeHint, &error, test.limit); });
        EXPECT_EQ(error, test.expected) << test.what;
        EXPECT_EQ(result.has_value(), test.expected == InflateError::None) << test.what;
        if (result) {
            EXPECT_EQ(result->bytes.size(), test.limit) << test.what;
        }
        if (test.expected != InflateError::None) {
            EXPECT_LT(rise, kMaxPeakRiseKb) << test.what;
        }
    }
}

TEST(ByteBudgetZlib, EachPackLimitHoldsToTheByteAndRefusesWithoutTakingTheMemory) {
    using test::pack_entry;
    using test::pack_of;
    const std::string zeros1M = zlib_of_zeros(kMiB);
    const std::string zeros256M = zlib_of_zeros(256 * kMiB);
    const std::string oneMiB = pack_of({pack_entry(3, kMiB, zeros1M)});
    const std::string twoMiB = pack_of({pack_entry(3, kMiB, zeros1M), pack_entry(3, kMiB, zeros1M)});
    // A delta on a 64 KiB base: every one-byte copy opcode repeats the whole base.
    const std::string base(0x10000, 'b');
    const auto copies = [&](std::uint64_t targetBytes, std::size_t opcodes) {
        const std::string delta =
            test::delta_varint(base.size()) + test::delta_varint(targetBytes) + std::string(opcodes, '\x80');
        return std::pair(pack_of({pack_entry(3, base.size(), test::deflate_with_zlib(base, 9)),
                                  pack_entry(7, delta.size(),
                                             test::from_hex(test::git_object_name(3, base)) +
                                                 test::deflate_with_zlib(delta, 9))}),
                         base.size() + delta.size() + targetBytes);
    };
    const auto [threeCopies, threeCopiesTotal] = copies(3 * 0x10000, 3);
    // The total allowed a pack of P bytes is P * 256 + the allowance: here exactly 1 MiB.
    ByteLimits relative;
    relative.packAllowanceBytes = kMiB - 256 * oneMiB.size();
    ByteLimits relativeShort = relative;
    --relativeShort.packAllowanceBytes;
    const ObjectNameFunction outOfMemory = [](std::string_view, std::string_view) -> std::string {
        throw std::bad_alloc();
    };

    struct Case {
        const char* what;
        std::string pack;
        ByteLimits limits;
        PackError expected;
        ObjectNameFunction objectName = object_name;
    };
    const std::vector<Case> cases = {
        {"256 MiB of zeros declared as 100 bytes",
         pack_of({pack_entry(3, 100, zeros256M)}),
         {},
         PackError::SizeMismatch},
        {"256 MiB of zeros over a 64 MiB object limit", pack_of({pack_entry(3, 256 * kMiB, zeros256M)}),
         limits_of(64 * kMiB), PackError::TooLarge},
        {"an object at the object limit", oneMiB, limits_of(kMiB), PackError::None},
        {"an object one byte over it", oneMiB, limits_of(kMiB - 1), PackError::TooLarge},
        {"two objects at the total limit", twoMiB, limits_of(kMiB, 2 * kMiB), PackError::None},
        {"two objects one byte over it", twoMiB, limits_of(kMiB, 2 * kMiB - 1), PackError::TooLarge},
        {"an object at 256 bytes per pack byte plus the allowance", oneMiB, relative, PackError::None},
        {"an object one byte over that", oneMiB, relativeShort, PackError::TooLarge},
        {"a delta whose base, own bytes and result meet the total", threeCopies,
         limits_of(kMiB, threeCopiesTotal), PackError::None},
        {"the same delta one byte over it", threeCopies, limits_of(kMiB, threeCopiesTotal - 1),
         PackError::TooLarge},
        {"a delta result over the object limit", threeCopies, limits_of(3 * 0x10000 - 1),
         PackError::TooLarge},
        {"memory running out while naming an object", oneMiB, {}, PackError::TooLarge, outOfMemory},
    };
    for (const Case& test : cases) {
        PackError error = PackError::BadHeader;
        std::optional<ObjectSet> objects;
        long rise = 0;
        EXPECT_NO_THROW(rise = peak_rise_kb([&] {
                            objects = parse_packfile(test.pack, test.objectName, &error, test.limits);
                        }))
            << test.what;
        EXPECT_EQ(error, test.expected) << test.what;
        EXPECT_EQ(objects.has_value(), test.expected == PackError::None) << test.what;
        EXPECT_LT(rise, kMaxPeakRiseKb) << test.what;
    }
}

} // namespace
} // namespace corvandell::git
