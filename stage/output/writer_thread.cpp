#include "writer_thread.h"

#include <signal.h>

#include <chrono>
#include <exception>
#include <utility>

#include "unfinished.h"

namespace stage {
namespace {

Result<Done> run_task(const WriterThread::Task& task) {
    try {
        return task();
    } catch (const std::exception& thrown) {  // such as std::bad_alloc
        return Error{thrown.what()};
    }
}

}  // namespace

WriterThread::WriterThread(size_t most_waiting) : most_waiting_(most_waiting) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before);  // the new thread inherits this
    thread_ = std::thread([this] { work(); });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

WriterThread::~WriterThread() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
        waiting_.clear();
    }
    changed_.notify_all();
    thread_.join();
}

Result<Done> WriterThread::add(Task task) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return waiting_.size() < most_waiting_ || error_; });
    if (error_) return *error_;
    waiting_.push_back(std::move(task));
    changed_.notify_all();
    return Done{};
}

Result<Done> WriterThread::finish() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return waiting_.empty() && !running_; });
    if (error_) return *error_;
    return Done{};
}

double WriterThread::busy_seconds() const {
    const std::lock_guard lock(mutex_);
    return busy_seconds_;
}

void WriterThread::work() {
    note_writer_thread();
    std::unique_lock lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return ending_ || !waiting_.empty(); });
        if (waiting_.empty()) break;
        Task task = std::move(waiting_.front());
        waiting_.pop_front();
        running_ = true;
        changed_.notify_all();
        lock.unlock();
        const auto start = std::chrono::steady_clock::now();
        const Result<Done> done = run_task(task);
        task = {};  // frees its picture outside the lock
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        lock.lock();
        running_ = false;
        busy_seconds_ += seconds;
        if (!done) {
            error_ = done.error();
            waiting_.clear();
        }
        changed_.notify_all();
    }
    forget_writer_thread();
}

}  // namespace stage
