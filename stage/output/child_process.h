// Runs a command that reads its standard input. Inside the library only.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "stage/result.h"

namespace stage {

/// A started command. Its standard output is discarded, its standard error kept. Destroyed while it runs, it is
/// killed and waited for; so it is when a fault or a signal ends this process (stage/output/unfinished.h). Move only.
class ChildProcess {
  public:
    /// arguments[0] is the command, looked up in PATH.
    static Result<ChildProcess> start(const std::vector<std::string>& arguments);

    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&& other) noexcept;
    ~ChildProcess();

    /// False when the command reads no more.
    bool feed(std::span<const unsigned char> bytes);
    /// Closes its input and waits for its end. Returns how it failed, such as "failed with exit status 1"; empty for
    /// exit status 0.
    std::string wait();
    /// The last lines of its standard error, at most `count`, without the final newline. Call after wait().
    std::string last_lines(size_t count) const;

  private:
    ChildProcess() = default;
    pid_t pid_ = -1;
    int input_ = -1;     // this process's end of the socket pair
    int messages_ = -1;  // its standard error, a file in memory
};

}  // namespace stage
