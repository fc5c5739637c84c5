// Runs a command and writes to its standard input. Internal to the library.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "stage/result.h"

namespace stage {

/// A started command. Its standard error is kept, its standard output discarded or kept with it. The destructor kills a
/// command that still runs and waits for it; a fault or a signal that ends this process does the same
/// (stage/output/unfinished.h). Move only.
class ChildProcess {
  public:
    enum class Output { kDiscard, kKeep };

    /// arguments[0] is the command, looked up in PATH.
    static Result<ChildProcess> start(const std::vector<std::string>& arguments, Output output = Output::kDiscard);

    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&& other) noexcept;
    ~ChildProcess();

    /// Writes to the command's standard input. False when the command has stopped reading.
    bool feed(std::span<const unsigned char> bytes);
    /// Closes the command's input and waits for its end. Error: an exit status other than 0; the message is a verb
    /// phrase such as "failed with exit status 1".
    Result<Done> wait();
    /// The last lines that were kept, at most `count`, without the final newline. Call after wait().
    std::string last_lines(size_t count) const;

  private:
    ChildProcess() = default;
    pid_t pid_ = -1;
    int input_ = -1;     // this process's end of the socket pair
    int messages_ = -1;  // what is kept, a file in memory
};

}  // namespace stage
