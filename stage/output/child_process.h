// Runs a command and writes to its standard input. Internal to the library.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "stage/result.h"

namespace stage {

/// A running command. Keeps its standard error; its standard output is kept too or discarded. The destructor kills a
/// running command and waits for it, and so does a fault or a signal that ends this process
/// (stage/output/unfinished.h). Move only.
class ChildProcess {
  public:
    enum class Output { kDiscard, kKeep };

    /// arguments[0] is the command, looked up in PATH.
    static Result<ChildProcess> start(const std::vector<std::string>& arguments, Output output = Output::kDiscard);

    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&& other) noexcept;
    ~ChildProcess();

    /// Writes to the command's standard input. False if the command no longer reads.
    bool feed(std::span<const unsigned char> bytes);
    /// Closes the command's input and waits for its end. Error: an exit status other than 0; the message is a verb
    /// phrase such as "failed with exit status 1".
    Result<Done> wait();
    /// The last kept lines, at most `count`, without the final newline. Call after wait().
    std::string last_lines(size_t count) const;

  private:
    ChildProcess() = default;
    pid_t pid_ = -1;
    int input_ = -1;     // this process's end of the socket pair
    int messages_ = -1;  // file in memory with the kept output
};

}  // namespace stage
