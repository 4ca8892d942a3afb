// The git engine benchmark: our inflate, SHA-1, pack decode and checkout side by side with
// zlib, libdeflate, OpenSSL and the real git, on the packs of a game repository (what a
// depth-1 clone gets, and its whole history), and a native depth-1 clone against git clone;
// and how planning a checkout grows with the number of tree entries.
//
// Every figure is the best of a few runs in this one process, so both sides see the same
// machine state; the decoders take turns and are timed by the clock and by CPU time too.
// External commands run as children and are timed with wait4, which also gives their peak
// memory.
//
// usage: git-engine-bench <repository> <depth-1 pack> <depth-1 clone> <tip> <full pack> <scratch>
//        git-engine-bench --sha1-portable   (run with OpenSSL's SHA instructions masked)
#include "webgames/git/Checkout.hpp"
#include "webgames/git/CheckoutPlan.hpp"
#include "webgames/git/GitClone.hpp"
#include "webgames/git/GitTree.hpp"
#include "webgames/git/Inflate.hpp"
#include "webgames/git/PackIndex.hpp"
#include "webgames/git/PackObjectReader.hpp"
#include "webgames/git/PackSource.hpp"
#include "webgames/git/Packfile.hpp"
#include "webgames/git/PktLine.hpp"
#include "webgames/git/Sha1.hpp"
#include "webgames/git/Sha1Blocks.hpp"

#include <libdeflate.h>
#include <openssl/sha.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace corvandell::git;

struct Stream {
    std::size_t offset = 0;       // where the zlib stream starts in the pack
    std::size_t declaredSize = 0; // inflated size from the entry header
    std::size_t compressedSize = 0;
};

struct ChildRun {
    double seconds = 0;
    long maxRssKb = 0;
    bool isOk = false;
};

double seconds_since(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double best_seconds(int runs, const std::function<void()>& work) {
    double best = 1e30;
    for (int i = 0; i < runs; ++i) {
        const auto start = std::chrono::steady_clock::now();
        work();
        best = std::min(best, seconds_since(start));
    }
    return best;
}

double thread_cpu_seconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

// The best run of some work by the clock and by this thread's CPU time. Other programs on
// a busy machine stretch the first far more than the second.
struct Timing {
    double seconds = 1e30;
    double cpuSeconds = 1e30;

    void keepBest(const std::function<void()>& work) {
        const double cpuStart = thread_cpu_seconds();
        const auto start = std::chrono::steady_clock::now();
        work();
        seconds = std::min(seconds, seconds_since(start));
        cpuSeconds = std::min(cpuSeconds, thread_cpu_seconds() - cpuStart);
    }
};

// Runs a program as a child; its exit status and peak resident memory come back. A fresh
// exec, so the child's memory figure holds nothing of this process.
ChildRun run_program(const std::vector<std::string>& arguments) {
    std::vector<char*> argv;
    for (const auto& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    const auto start = std::chrono::steady_clock::now();
    const pid_t pid = fork();
    if (pid == 0) {
        execvp(argv[0], argv.data());
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    wait4(pid, &status, 0, &usage);
    return {seconds_since(start), usage.ru_maxrss, WIFEXITED(status) && WEXITSTATUS(status) == 0};
}

ChildRun best_shell_run(int runs, const std::string& command, const std::function<void()>& before) {
    ChildRun best{1e30, 0, true};
    for (int i = 0; i < runs; ++i) {
        before();
        const ChildRun run = run_program({"/bin/sh", "-c", command});
        best.isOk = best.isOk && run.isOk;
        best.seconds = std::min(best.seconds, run.seconds);
        best.maxRssKb = std::max(best.maxRssKb, run.maxRssKb);
    }
    return best;
}

// Read at its exact size, as the clone holds a pack: no growth, no spare capacity.
std::string read_file(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::string bytes(fs::file_size(path), '\0');
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

// Walks the entry headers and lets zlib find where each stream ends.
std::vector<Stream> find_streams(std::string_view pack) {
    std::vector<Stream> streams;
    const auto byte = [&](std::size_t at) { return static_cast<std::uint8_t>(pack[at]); };
    const std::uint32_t count = (std::uint32_t{byte(8)} << 24) | (std::uint32_t{byte(9)} << 16) |
                                (std::uint32_t{byte(10)} << 8) | byte(11);
    std::size_t position = 12;
    std::string scratch;
    for (std::uint32_t i = 0; i < count; ++i) {
        const int type = (byte(position) >> 4) & 7;
        std::size_t size = byte(position) & 15;
        for (int shift = 4; byte(position++) & 0x80; shift += 7) {
            size |= static_cast<std::size_t>(byte(position) & 0x7F) << shift;
        }
        if (type == 6) {
            while (byte(position++) & 0x80) {
            }
        } else if (type == 7) {
            position += 20;
        }
        z_stream zlib{};
        inflateInit(&zlib);
        scratch.resize(size + 1);
        zlib.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(pack.data() + position));
        zlib.avail_in = static_cast<uInt>(pack.size() - position);
        zlib.next_out = reinterpret_cast<Bytef*>(scratch.data());
        zlib.avail_out = static_cast<uInt>(scratch.size());
        inflate(&zlib, Z_FINISH);
        streams.push_back({position, size, zlib.total_in});
        position += zlib.total_in;
        inflateEnd(&zlib);
    }
    return streams;
}

void print_ratio(const char* what, double ratio, const char* goal, bool isMet) {
    std::printf("  %-44s %6.2f   goal %-8s %s\n", what, ratio, goal, isMet ? "met" : "NOT MET");
}

// The three decoders take turns, round after round, so a busy machine slows each of them
// alike; each keeps its best round. Every decoder writes into a buffer of the entry's
// size, ours a string (as the pack decoder keeps it), the others uninitialised memory.
void bench_inflate(std::string_view pack, const std::vector<Stream>& streams, const char* label) {
    constexpr int kRounds = 9;
    std::size_t outputBytes = 0;
    std::size_t inputBytes = 0;
    for (const auto& stream : streams) {
        outputBytes += stream.declaredSize;
        inputBytes += stream.compressedSize;
    }
    libdeflate_decompressor* decompressor = libdeflate_alloc_decompressor();
    for (const auto& entry : streams) { // the same bytes, from the same input bytes
        std::string reference(entry.declaredSize, '\0');
        std::size_t inputUsed = 0;
        libdeflate_zlib_decompress_ex(decompressor, pack.data() + entry.offset, entry.compressedSize,
                                      reference.data(), reference.size(), &inputUsed, nullptr);
        const auto result = inflate_zlib(pack.substr(entry.offset), entry.declaredSize);
        if (!result || result->bytes != reference || result->consumed != inputUsed) {
            std::printf("our inflate disagrees with libdeflate at pack offset %zu\n", entry.offset);
            std::exit(1);
        }
    }
    std::size_t sink = 0;
    const auto runOurs = [&] {
        for (const auto& stream : streams) {
            const auto result = inflate_zlib(pack.substr(stream.offset), stream.declaredSize);
            sink += result ? result->bytes.size() : 0;
        }
    };
    const auto runZlib = [&] {
        z_stream stream{};
        inflateInit(&stream);
        for (const auto& entry : streams) {
            const auto out = std::make_unique_for_overwrite<char[]>(entry.declaredSize);
            inflateReset(&stream);
            stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(pack.data() + entry.offset));
            stream.avail_in = static_cast<uInt>(entry.compressedSize);
            stream.next_out = reinterpret_cast<Bytef*>(out.get());
            stream.avail_out = static_cast<uInt>(entry.declaredSize);
            inflate(&stream, Z_FINISH);
            sink += stream.total_out;
        }
        inflateEnd(&stream);
    };
    const auto runLibdeflate = [&] {
        for (const auto& entry : streams) {
            const auto out = std::make_unique_for_overwrite<char[]>(entry.declaredSize);
            std::size_t produced = 0;
            libdeflate_zlib_decompress_ex(decompressor, pack.data() + entry.offset, entry.compressedSize,
                                          out.get(), entry.declaredSize, nullptr, &produced);
            sink += produced;
        }
    };
    Timing ours;
    Timing zlib;
    Timing libdeflate;
    for (int round = 0; round < kRounds; ++round) {
        ours.keepBest(runOurs);
        zlib.keepBest(runZlib);
        libdeflate.keepBest(runLibdeflate);
    }
    libdeflate_free_decompressor(decompressor);
    if (sink != outputBytes * 3 * kRounds) {
        std::printf("an inflate disagrees with the pack's sizes\n");
        std::exit(1);
    }
    const double megabytes = static_cast<double>(outputBytes) / 1e6;
    std::printf("Inflate, %s: %zu zlib streams, %.1f MB -> %.1f MB\n", label, streams.size(),
                static_cast<double>(inputBytes) / 1e6, megabytes);
    std::printf("  ours %8.0f MB/s    zlib %8.0f MB/s    libdeflate %8.0f MB/s   (CPU time)\n",
                megabytes / ours.cpuSeconds, megabytes / zlib.cpuSeconds, megabytes / libdeflate.cpuSeconds);
    std::printf("  ours %8.0f MB/s    zlib %8.0f MB/s    libdeflate %8.0f MB/s   (clock)\n",
                megabytes / ours.seconds, megabytes / zlib.seconds, megabytes / libdeflate.seconds);
    const double overZlib = zlib.cpuSeconds / ours.cpuSeconds;
    const double overLibdeflate = libdeflate.cpuSeconds / ours.cpuSeconds;
    print_ratio("ours / zlib (speed, CPU time)", overZlib, ">= 1.0", overZlib >= 1.0);
    print_ratio("ours / libdeflate (speed, CPU time)", overLibdeflate, ">= 1.0", overLibdeflate >= 1.0);
    std::printf("  %-44s %6.2f\n", "ours / libdeflate (speed, clock)", libdeflate.seconds / ours.seconds);
}

bool inflate_alone(std::string_view pack, std::string_view decoder) {
    const auto streams = find_streams(pack);
    libdeflate_decompressor* decompressor = libdeflate_alloc_decompressor();
    std::size_t sink = 0;
    for (int round = 0; round < 30 && decoder != "none"; ++round) {
        for (const auto& entry : streams) {
            if (decoder == "ours") {
                sink += inflate_zlib(pack.substr(entry.offset), entry.declaredSize)->bytes.size();
                continue;
            }
            const auto out = std::make_unique_for_overwrite<char[]>(entry.declaredSize);
            std::size_t produced = 0;
            libdeflate_zlib_decompress_ex(decompressor, pack.data() + entry.offset, entry.compressedSize,
                                          out.get(), entry.declaredSize, nullptr, &produced);
            sink += produced;
        }
    }
    libdeflate_free_decompressor(decompressor);
    return decoder == "none" || (sink > 0 && (decoder == "ours" || decoder == "libdeflate"));
}

void bench_inflate_both(std::string_view pack, const std::string& label = "") {
    const auto streams = find_streams(pack);
    bench_inflate(pack, streams, (label + "every entry").c_str());
    std::vector<Stream> compressed; // leaves out stored blocks, which are mostly a memcpy
    std::copy_if(streams.begin(), streams.end(), std::back_inserter(compressed),
                 [](const Stream& stream) { return stream.compressedSize * 10 < stream.declaredSize * 9; });
    bench_inflate(pack, compressed, (label + "entries that compress by over 10%").c_str());
}

void bench_sha1(std::string_view data, sha1_detail::BlockFunction ours, const char* label, double goal) {
    constexpr int kRounds = 8;
    Sha1Digest digest{};
    const double oursSeconds = best_seconds(3, [&] {
        for (int i = 0; i < kRounds; ++i) {
            digest = sha1_detail::sha1_with(ours, data);
        }
    });
    unsigned char reference[SHA_DIGEST_LENGTH];
    const double opensslSeconds = best_seconds(3, [&] {
        for (int i = 0; i < kRounds; ++i) {
            SHA1(reinterpret_cast<const unsigned char*>(data.data()), data.size(), reference);
        }
    });
    if (!std::equal(digest.begin(), digest.end(), reference)) {
        std::printf("our SHA-1 disagrees with OpenSSL\n");
        std::exit(1);
    }
    const double megabytes = static_cast<double>(data.size()) * kRounds / 1e6;
    std::printf("SHA-1 %s, %.0f MB\n", label, megabytes);
    std::printf("  ours %8.0f MB/s    OpenSSL %8.0f MB/s\n", megabytes / oursSeconds,
                megabytes / opensslSeconds);
    const double ratio = opensslSeconds / oursSeconds;
    char goalText[16];
    std::snprintf(goalText, sizeof goalText, ">= %.1f", goal);
    print_ratio("ours / OpenSSL (speed)", ratio, goalText, ratio >= goal);
}

std::string index_pack_command(const fs::path& index, const fs::path& packPath) {
    return "git index-pack --threads=1 -o '" + index.string() + "' '" + packPath.string() + "' >/dev/null";
}

std::string quoted(const fs::path& path) {
    return "'" + path.string() + "'";
}

// Both requests of a clone answered by `git upload-pack` on the local repository, framed
// as git's HTTP backend frames them: the engine's whole clone without the network.
class UploadPackTransport : public GitTransport {
public:
    UploadPackTransport(fs::path repository, fs::path scratch)
        : repository_(std::move(repository)), scratch_(std::move(scratch)) {}

    std::string request(const std::wstring& path, const std::string& body,
                        const std::optional<std::wstring>& contentType,
                        const std::optional<std::wstring>& accept) override {
        std::string output;
        request_streamed(path, body, contentType, accept,
                         [&output](std::string_view piece) { output.append(piece); });
        return output;
    }
    // As WinHTTP hands the client the reply: piece by piece, never whole.
    void request_streamed(const std::wstring&, const std::string& body, const std::optional<std::wstring>&,
                          const std::optional<std::wstring>&,
                          const std::function<void(std::string_view)>& receive) override {
        if (body.empty()) {
            receive(pkt_line_encode("# service=git-upload-pack\n") + "0000");
            stream_output("git upload-pack --stateless-rpc --advertise-refs " + quoted(repository_), receive);
            return;
        }
        const fs::path request = scratch_ / "upload-pack-request";
        std::ofstream(request, std::ios::binary)
            .write(body.data(), static_cast<std::streamsize>(body.size()));
        stream_output("git upload-pack --stateless-rpc " + quoted(repository_) + " <" + quoted(request),
                      receive);
    }

private:
    static void stream_output(const std::string& command,
                              const std::function<void(std::string_view)>& receive) {
        FILE* pipe = popen(command.c_str(), "r");
        char chunk[1 << 16];
        for (std::size_t count; pipe != nullptr && (count = std::fread(chunk, 1, sizeof chunk, pipe)) > 0;) {
            receive(std::string_view(chunk, count));
        }
        if (pipe == nullptr || pclose(pipe) != 0) {
            throw std::runtime_error("failed: " + command);
        }
    }

    fs::path repository_;
    fs::path scratch_;
};

// Peak memory of children started while this process is still small: Linux carries a
// process's peak across exec, so a child forked later would report this process's size.
struct PackMemory {
    long oursKb = 0;      // the indexed decode, reading the pack from its file
    long objectSetKb = 0; // the object set, from the pack read into memory
    long readOnlyKb = 0;
    long indexPackKb = 0;
};

struct MemoryFigures {
    PackMemory tipPack;
    PackMemory fullPack;
    ChildRun oursClone;
    ChildRun gitClone;
};

PackMemory measure_pack_memory(const fs::path& packPath, const fs::path& scratch) {
    const fs::path index = scratch / "memory.idx";
    fs::remove(index);
    return {run_program({"/proc/self/exe", "--decode-only", packPath.string()}).maxRssKb,
            run_program({"/proc/self/exe", "--object-set-only", packPath.string()}).maxRssKb,
            run_program({"/proc/self/exe", "--read-only", packPath.string()}).maxRssKb,
            run_program({"/bin/sh", "-c", index_pack_command(index, packPath)}).maxRssKb};
}

// The best time of three clones each, ours and git's, and the peak memory of each.
MemoryFigures measure_memory(const fs::path& tipPack, const fs::path& fullPack, const fs::path& repository,
                             const fs::path& scratch) {
    MemoryFigures figures{
        measure_pack_memory(tipPack, scratch), measure_pack_memory(fullPack, scratch), {}, {}};
    const fs::path destination = scratch / "clone";
    figures.oursClone.seconds = figures.gitClone.seconds = 1e30;
    for (int round = 0; round < 3; ++round) {
        fs::remove_all(destination);
        const ChildRun ours = run_program(
            {"/proc/self/exe", "--clone-only", repository.string(), destination.string(), scratch.string()});
        fs::remove_all(destination);
        const ChildRun git = run_program({"git", "clone", "-q", "--depth", "1", "--no-local",
                                          "file://" + repository.string(), destination.string()});
        for (auto [best, run] : {std::pair{&figures.oursClone, ours}, std::pair{&figures.gitClone, git}}) {
            best->isOk = run.isOk && (round == 0 || best->isOk);
            best->seconds = std::min(best->seconds, run.seconds);
            best->maxRssKb = std::max(best->maxRssKb, run.maxRssKb);
        }
    }
    fs::remove_all(destination);
    return figures;
}

// The pack stays in memory, as the clone holds it; its index is kept for the checkout.
void bench_decode(const std::string& label, const fs::path& packPath, const PackMemory& memory,
                  const fs::path& scratch, std::optional<PackIndex>* kept) {
    const std::string pack = read_file(packPath);
    PackInMemory bytes(pack);
    std::optional<PackIndex> index;
    PackIndexStats stats;
    const double ours = best_seconds(3, [&] {
        index.reset();
        index = index_pack(bytes, nullptr, {}, &stats);
    });
    if (!index) {
        std::printf("our pack decoder failed on the pack\n");
        std::exit(1);
    }
    const fs::path indexFile = scratch / "bench.idx";
    const ChildRun git =
        best_shell_run(3, index_pack_command(indexFile, packPath), [&] { fs::remove(indexFile); });
    std::printf("Whole-pack decode (indexed), %s: %.1f MB, %zu entries\n", label.c_str(),
                static_cast<double>(pack.size()) / 1e6, index->entries().size());
    std::printf("  time: ours %8.3f s        git index-pack --threads=1 %8.3f s\n", ours, git.seconds);
    std::printf(
        "  peak memory: ours %ld MB from the pack's file (the object set %ld MB, reading the pack alone "
        "%ld MB), git index-pack %ld MB; contents held at once %.1f MB\n",
        memory.oursKb / 1024, memory.objectSetKb / 1024, memory.readOnlyKb / 1024, memory.indexPackKb / 1024,
        static_cast<double>(stats.peakContentBytes) / 1e6);
    print_ratio("ours / git (time)", ours / git.seconds, "<= 0.3", git.isOk && ours / git.seconds <= 0.3);
    const double memoryRatio = static_cast<double>(memory.oursKb) / static_cast<double>(memory.indexPackKb);
    print_ratio("ours / git (peak memory)", memoryRatio, "<= 1.5", memoryRatio <= 1.5);
    if (kept != nullptr) {
        *kept = std::move(index);
    }
}

// Regular files only: git archive also writes symbolic links and an empty folder for each
// gitlink, both of which the checkout skips on purpose.
bool same_regular_files(const fs::path& ours, const fs::path& git) {
    const std::string prune = "find " + quoted(git) + " -type l -delete && find " + quoted(git) + " " +
                              quoted(ours) + " -depth -type d -empty -delete";
    return std::system((prune + " && diff -r -q " + quoted(ours) + " " + quoted(git)).c_str()) == 0;
}

// As the clone does it: trees and blobs read back from the indexed pack in memory.
void checkout_from_index(const std::string& pack, const PackIndex& index, const std::string& tip,
                         const fs::path& folder) {
    PackInMemory bytes(pack);
    PackObjectReader objects(bytes, index);
    const std::string rootTree = root_tree_of(*objects.content(*index.find(tip)));
    write_checkout(plan_checkout(objects, rootTree), objects, folder);
}

// Creating thousands of files costs what the file system's state allows: the writeback
// and freeing left by the round before can double a round's time. So both run in turns,
// each into a folder just emptied with the disk synced first, and the best of each counts.
void bench_checkout(const std::string& pack, const PackIndex& index, const fs::path& clone,
                    const std::string& tip, const fs::path& scratch) {
    const fs::path oursFolder = scratch / "checkout-ours";
    const fs::path gitFolder = scratch / "checkout-git";
    const auto settle = [](const fs::path& folder) {
        fs::remove_all(folder);
        fs::create_directories(folder);
        run_program({"sync"});
    };
    double oursCheckout = 1e30;
    ChildRun gitCheckout{1e30, 0, true};
    for (int round = 0; round < 5; ++round) {
        settle(oursFolder);
        oursCheckout = std::min(oursCheckout,
                                best_seconds(1, [&] { checkout_from_index(pack, index, tip, oursFolder); }));
        const ChildRun git = best_shell_run(
            1, "git -C " + quoted(clone) + " archive " + tip + " | tar -x -C " + quoted(gitFolder),
            [&] { settle(gitFolder); });
        gitCheckout.isOk = gitCheckout.isOk && git.isOk;
        gitCheckout.seconds = std::min(gitCheckout.seconds, git.seconds);
    }
    const bool isSame = same_regular_files(oursFolder, gitFolder);
    std::printf("Checkout of the tip tree (regular files %s git's)\n",
                isSame ? "identical to" : "DIFFERENT from");
    std::printf("  ours %8.3f s        git archive | tar -x %8.3f s   (each into an empty folder)\n",
                oursCheckout, gitCheckout.seconds);
    print_ratio("ours / git (time)", oursCheckout / gitCheckout.seconds, "<= 1.0",
                isSame && oursCheckout <= gitCheckout.seconds);
}

void print_clone(const MemoryFigures& memory) {
    std::printf("Depth-1 clone from the local repository through git upload-pack (native; no network)\n");
    std::printf("  time: ours %8.3f s        git clone --depth 1 %8.3f s\n", memory.oursClone.seconds,
                memory.gitClone.seconds);
    std::printf("  peak memory: ours %ld MB, git clone (its largest process) %ld MB\n",
                memory.oursClone.maxRssKb / 1024, memory.gitClone.maxRssKb / 1024);
    const bool isOk = memory.oursClone.isOk && memory.gitClone.isOk;
    print_ratio("ours / git (time)", memory.oursClone.seconds / memory.gitClone.seconds, "<= 1.0",
                isOk && memory.oursClone.seconds <= memory.gitClone.seconds);
    const double memoryRatio =
        static_cast<double>(memory.oursClone.maxRssKb) / static_cast<double>(memory.gitClone.maxRssKb);
    print_ratio("ours / git (peak memory)", memoryRatio, "(none)", isOk);
}

// One root naming `folders` distinct folders that hold one file each.
std::string make_wide_tree(std::size_t folders, ObjectSet& objects) {
    const auto add = [&](std::int32_t type, std::string content) {
        const char* word = type == 2 ? "tree" : "blob";
        std::string name =
            object_name(std::string(word) + " " + std::to_string(content.size()) + '\0', content);
        objects[name] = GitObject{type, name, std::move(content)};
        return name;
    };
    const auto entry = [](const char* mode, const std::string& name, const std::string& hexName) {
        std::string raw;
        for (std::size_t at = 0; at < hexName.size(); at += 2) {
            raw.push_back(static_cast<char>(std::stoi(hexName.substr(at, 2), nullptr, 16)));
        }
        return std::string(mode) + " " + name + '\0' + raw;
    };
    std::string root;
    for (std::size_t index = 0; index < folders; ++index) {
        const std::string file = add(3, "file " + std::to_string(index));
        root += entry("40000", "folder" + std::to_string(index), add(2, entry("100644", "page.html", file)));
    }
    return add(2, root);
}

// Planning visits every entry once however the tree is shaped, so four times the entries
// take four to six times as long: each visit looks its object up in the object map, whose
// lookups slow down a little as it grows and spills out of the cache. The pre-count that
// rescanned a tree for each folder took 21 times as long for four times the folders.
void bench_tree_expansion() {
    constexpr std::size_t kFolders = 50000;
    double seconds[2] = {};
    for (int round = 0; round < 2; ++round) {
        ObjectSet objects;
        const std::string root = make_wide_tree(kFolders << (2 * round), objects);
        seconds[round] = best_seconds(3, [&] {
            if (plan_checkout(objects, root).fileCount != kFolders << (2 * round)) {
                std::printf("the checkout plan lost files\n");
                std::exit(1);
            }
        });
    }
    std::printf("Checkout plan of one tree of distinct folders, a file in each\n");
    std::printf("  %zu folders %8.3f s    %zu folders %8.3f s\n", kFolders, seconds[0], kFolders * 4,
                seconds[1]);
    const double ratio = seconds[1] / seconds[0];
    print_ratio("time for 4x the folders / time for 1x", ratio, "<= 8.0", ratio <= 8.0);
}

} // namespace

int main(int argc, char** argv) {
    // Children for the memory figures: the decode alone, reading the pack alone, a clone.
    if (argc == 3 && std::string(argv[1]) == "--decode-only") {
        PackFile pack(argv[2]);
        return index_pack(pack) ? 0 : 1;
    }
    if (argc == 3 && std::string(argv[1]) == "--object-set-only") {
        return parse_packfile(read_file(argv[2]), object_name) ? 0 : 1;
    }
    if (argc == 3 && std::string(argv[1]) == "--read-only") {
        return read_file(argv[2]).empty() ? 1 : 0;
    }
    if (argc == 5 && std::string(argv[1]) == "--clone-only") {
        UploadPackTransport transport(argv[2], argv[4]);
        shallow_clone(transport, "bench", "game", argv[3], nullptr);
        return 0;
    }
    // One decoder alone over every entry, thirty times (or "none": only finding the
    // entries), to be profiled, or timed by its user CPU time, which a busy machine
    // disturbs less than the clock.
    if (argc == 4 && std::string(argv[1]) == "--inflate-one") {
        const std::string pack = read_file(argv[2]);
        return inflate_alone(pack, argv[3]) ? 0 : 2;
    }
    if (argc == 3 && std::string(argv[1]) == "--inflate-only") {
        const std::string pack = read_file(argv[2]);
        bench_inflate_both(pack);
        return 0;
    }
    if (argc == 5 && std::string(argv[1]) == "--checkout-only") { // to profile the checkout
        const std::string pack = read_file(argv[2]);
        PackInMemory bytes(pack);
        checkout_from_index(pack, *index_pack(bytes), argv[3], argv[4]);
        return 0;
    }
    if (argc == 2 && std::string(argv[1]) == "--plan-growth") {
        bench_tree_expansion();
        return 0;
    }
    if (argc == 2 && std::string(argv[1]) == "--sha1-portable") {
        std::string data(64 << 20, '\0');
        for (std::size_t i = 0; i < data.size(); ++i) {
            data[i] = static_cast<char>(i * 2654435761u >> 13);
        }
        bench_sha1(data, &sha1_detail::compress_portable, "portable path vs OpenSSL without SHA instructions",
                   0.6);
        return 0;
    }
    if (argc != 7) {
        std::fprintf(stderr,
                     "usage: %s <repository> <depth-1 pack> <depth-1 clone> <tip> <full pack> <scratch>\n",
                     argv[0]);
        return 2;
    }
    const fs::path repository = argv[1];
    const fs::path tipPackPath = argv[2];
    const fs::path clone = argv[3];
    const std::string tip = argv[4];
    const fs::path fullPackPath = argv[5];
    const fs::path scratch = argv[6];
    fs::create_directories(scratch);
    const MemoryFigures memory = measure_memory(tipPackPath, fullPackPath, repository, scratch);
    {
        const std::string pack = read_file(tipPackPath);
        bench_inflate_both(pack, "depth-1 pack, ");
        std::printf("\n");
        bench_sha1(pack, sha1_detail::compress_selected(),
                   sha1_uses_cpu_instructions() ? "(SHA instructions used)"
                                                : "(no SHA instructions on this CPU)",
                   0.9);
    }
    {
        const std::string pack = read_file(fullPackPath);
        bench_inflate(pack, find_streams(pack), "full-history pack, every entry");
    }
    std::printf("\n");
    std::optional<PackIndex> index;
    bench_decode("depth-1 pack", tipPackPath, memory.tipPack, scratch, &index);
    bench_decode("full-history pack", fullPackPath, memory.fullPack, scratch, nullptr);
    std::printf("\n");
    bench_checkout(read_file(tipPackPath), *index, clone, tip, scratch);
    std::printf("\n");
    print_clone(memory);
    return 0;
}
