// The SHA-1 block functions behind `Sha1`, exposed so tests and benchmarks can run the
// portable and the CPU-instruction paths side by side; the client only uses `Sha1`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "webgames/git/Sha1.hpp"

namespace corvandell::git::sha1_detail {

// Runs the compression function over `blockCount` consecutive 64-byte blocks.
using BlockFunction = void (*)(std::uint32_t* state, const std::uint8_t* blocks, std::size_t blockCount);

void compress_portable(std::uint32_t* state, const std::uint8_t* blocks, std::size_t blockCount);

// The SHA instruction path, or null when this build or this CPU has none.
BlockFunction compress_with_cpu_instructions();

// The path `Sha1` uses, chosen once per process.
BlockFunction compress_selected();

Sha1Digest sha1_with(BlockFunction compress, std::string_view bytes);

} // namespace corvandell::git::sha1_detail
