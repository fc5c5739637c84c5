// A thread that writes pictures while the next ones are drawn.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// Runs tasks on its own thread, one after the other, in the order of add(). A process may have only one at a time,
/// since a fault or a signal that ends the process stops it first (stage/output/unfinished.h). Signals that other code
/// handles are blocked on its thread.
class STAGE_EXPORT WriterThread {
  public:
    using Task = std::function<Result<Done>()>;

    /// most_waiting: the largest number of waiting tasks, at least 1.
    explicit WriterThread(size_t most_waiting);
    /// Drops the waiting tasks and waits for the running one.
    ~WriterThread();
    WriterThread(const WriterThread&) = delete;
    WriterThread& operator=(const WriterThread&) = delete;

    /// Blocks while the queue is full. Error: the error of the first task that failed; later tasks do not run.
    Result<Done> add(Task task);
    /// Waits until every task has run. Error as for add.
    Result<Done> finish();
    /// The total duration of the tasks.
    double busy_seconds() const;

  private:
    void work();

    const size_t most_waiting_;
    mutable std::mutex mutex_;  // guards the fields down to `error_`
    std::condition_variable changed_;
    std::deque<Task> waiting_;
    bool running_ = false;
    bool ending_ = false;
    double busy_seconds_ = 0.0;
    std::optional<Error> error_;
    std::thread thread_;
};

}  // namespace stage
