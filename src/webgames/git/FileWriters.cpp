#include "webgames/git/FileWriters.hpp"

#include "base/FileWrite.hpp"
#include "base/Utf8Path.hpp"

#include <algorithm>
#include <stdexcept>

namespace corvandell::git {

FileWriters::FileWriters(std::size_t threadCount, std::uint64_t maxWaitingBytes)
    : maxWaitingBytes_(maxWaitingBytes) {
    threadCount = std::max<std::size_t>(threadCount, 1); // with none, a full queue would never drain
    threads_.reserve(threadCount);
    try {
        for (std::size_t i = 0; i < threadCount; ++i) {
            threads_.emplace_back([this] { run(); });
        }
    } catch (...) {
        stop(); // a joinable thread left to its destructor would end the program
        throw;
    }
}

FileWriters::~FileWriters() {
    stop();
}

void FileWriters::stop() {
    {
        const std::lock_guard lock(mutex_);
        isStopping_ = true;
        jobs_.clear();
    }
    jobReady_.notify_all();
    for (std::thread& thread : threads_) {
        thread.join();
    }
    threads_.clear();
}

void FileWriters::throw_failure_locked() {
    if (!failure_.empty()) {
        throw std::runtime_error(failure_);
    }
}

void FileWriters::write(std::filesystem::path path, std::shared_ptr<const std::string> content) {
    const std::uint64_t size = content->size();
    std::unique_lock lock(mutex_);
    roomFreed_.wait(lock, [&] {
        return !failure_.empty() || waitingBytes_ == 0 || waitingBytes_ + size <= maxWaitingBytes_;
    });
    throw_failure_locked();
    waitingBytes_ += size;
    jobs_.push_back({std::move(path), std::move(content)});
    lock.unlock();
    jobReady_.notify_one();
}

void FileWriters::finish() {
    std::unique_lock lock(mutex_);
    roomFreed_.wait(lock, [&] { return !failure_.empty() || (jobs_.empty() && busy_ == 0); });
    throw_failure_locked();
}

void FileWriters::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        jobReady_.wait(lock, [&] { return isStopping_ || !jobs_.empty(); });
        if (isStopping_) {
            return;
        }
        Job job = std::move(jobs_.front());
        jobs_.pop_front();
        ++busy_;
        lock.unlock();
        std::string failure;
        try {
            write_file(job.path, *job.content);
        } catch (const std::exception& error) {
            failure = error.what();
        }
        const std::uint64_t size = job.content->size();
        job.content.reset(); // before the room is counted free
        lock.lock();
        --busy_;
        waitingBytes_ -= size;
        if (!failure.empty() && failure_.empty()) {
            failure_ = std::move(failure);
        }
        roomFreed_.notify_all();
    }
}

void write_file(const std::filesystem::path& path, std::string_view bytes) {
    if (!writeWholeFile(path, bytes)) {
        throw std::runtime_error("cannot write " + pathToUtf8(path));
    }
}

} // namespace corvandell::git
