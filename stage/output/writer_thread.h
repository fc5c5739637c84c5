// A thread that writes finished pictures, so that the next ones are drawn meanwhile.
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

/// Runs tasks one after the other, in the order in which they were added, on a thread of its own. One at a time in a
/// process: a fault or a signal that ends the process stops it first (stage/output/unfinished.h). No signal that other
/// code handles arrives on its thread.
class STAGE_EXPORT WriterThread {
  public:
    using Task = std::function<Result<Done>()>;

    /// most_waiting: tasks that wait at most, 1 or more.
    explicit WriterThread(size_t most_waiting);
    /// Drops the tasks that wait, and waits for the one that runs.
    ~WriterThread();
    WriterThread(const WriterThread&) = delete;
    WriterThread& operator=(const WriterThread&) = delete;

    /// Waits while as many tasks wait as may. Error: that of the first task that failed; the ones behind it do not run.
    Result<Done> add(Task task);
    /// Waits until every task has run. Error as for add.
    Result<Done> finish();
    /// The time that tasks took.
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
