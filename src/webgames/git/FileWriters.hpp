// Writing many files at once from one producer.
//
// A checkout spends most of its time in the file system creating files, not in reading
// their contents from the pack, and file systems create files in different folders side
// by side. So the producer hands each file to a few writer threads and goes on to the
// next blob, with a cap on the bytes waiting so memory stays bounded.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace corvandell::git {

class FileWriters {
public:
    // `maxWaitingBytes` bounds the contents handed over and not yet written; a content
    // larger than that waits until the writers are idle and then goes alone.
    FileWriters(std::size_t threadCount, std::uint64_t maxWaitingBytes);
    ~FileWriters(); // abandons what is still waiting and joins the writers
    FileWriters(const FileWriters&) = delete;
    FileWriters& operator=(const FileWriters&) = delete;

    // Queues one file, whose folder must exist. Throws the first failure of any earlier
    // write ("cannot write " + path), so a failing checkout stops early.
    void write(std::filesystem::path path, std::shared_ptr<const std::string> content);
    // Waits until every queued file is written; throws the first failure.
    void finish();

private:
    struct Job {
        std::filesystem::path path;
        std::shared_ptr<const std::string> content;
    };

    void run();
    void stop();
    void throw_failure_locked();

    const std::uint64_t maxWaitingBytes_;
    std::mutex mutex_;
    std::condition_variable jobReady_;
    std::condition_variable roomFreed_;
    std::deque<Job> jobs_;
    std::uint64_t waitingBytes_ = 0; // queued or being written
    std::size_t busy_ = 0;
    bool isStopping_ = false;
    std::string failure_;
    std::vector<std::thread> threads_;
};

// Writes the bytes to a new file, or over an old one, in a folder that exists; throws
// "cannot write " + path.
void write_file(const std::filesystem::path& path, std::string_view bytes);

} // namespace corvandell::git
