#include "child_process.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <signal.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "unfinished.h"

extern char** environ;

namespace stage {
namespace {

int spawn(const std::vector<std::string>& arguments, int input, int messages, ChildProcess::Output output, pid_t& pid) {
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, messages, STDERR_FILENO);
    if (output == ChildProcess::Output::kKeep)
        posix_spawn_file_actions_adddup2(&actions, messages, STDOUT_FILENO);
    else
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    // Signals are blocked, so that none ends this process between the start of the command and its registration.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    posix_spawnattr_setsigmask(&attributes, &before);
    const int failure = posix_spawnp(&pid, argv[0], &actions, &attributes, argv.data(), environ);
    if (failure == 0) note_unfinished_command(pid);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return failure;
}

}  // namespace

Result<ChildProcess> ChildProcess::start(const std::vector<std::string>& arguments, Output output) {
    // Sockets instead of a pipe, since MSG_NOSIGNAL prevents SIGPIPE when the command has ended. SOCK_CLOEXEC, so that
    // no other child process keeps this end open.
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        return Error{fmt::format("{} cannot be started: {}", arguments[0], std::strerror(errno))};
    ChildProcess child;
    child.input_ = ends[0];
    child.messages_ = memfd_create("messages", MFD_CLOEXEC);
    const int failure = child.messages_ < 0 ? errno : spawn(arguments, ends[1], child.messages_, output, child.pid_);
    close(ends[1]);
    if (failure == 0) return child;
    child.pid_ = -1;
    return Error{failure == ENOENT
                     ? fmt::format("there is no {} command; install the package {}", arguments[0], arguments[0])
                     : fmt::format("{} cannot be started: {}", arguments[0], std::strerror(failure))};
}

bool ChildProcess::feed(std::span<const unsigned char> bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = send(input_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) continue;
        if (sent <= 0) return false;
        bytes = bytes.subspan(static_cast<size_t>(sent));
    }
    return true;
}

Result<Done> ChildProcess::wait() {
    if (input_ >= 0) close(std::exchange(input_, -1));
    siginfo_t child;
    while (waitid(P_PID, static_cast<id_t>(pid_), &child, WEXITED | WNOWAIT) < 0 && errno == EINTR) {
    }
    forget_unfinished_command(pid_);  // before waitpid, which makes the id free for another process
    int status = 0;
    const pid_t ended = waitpid(pid_, &status, 0);
    pid_ = -1;
    if (ended < 0) return Error{fmt::format("failed: its exit status is not known ({})", std::strerror(errno))};
    if (WIFSIGNALED(status))
        return Error{fmt::format("was ended by signal {} ({})", WTERMSIG(status), strsignal(WTERMSIG(status)))};
    if (WEXITSTATUS(status) != 0) return Error{fmt::format("failed with exit status {}", WEXITSTATUS(status))};
    return Done{};
}

std::string ChildProcess::last_lines(size_t count) const {
    std::string text;
    char buffer[4096];
    off_t at = 0;
    for (ssize_t read = 0; (read = pread(messages_, buffer, sizeof buffer, at)) > 0; at += read)
        text.append(buffer, static_cast<size_t>(read));
    while (text.ends_with('\n')) text.pop_back();
    size_t start = text.size();
    for (size_t line = 0; line < count && start != std::string::npos && start > 0; ++line)
        start = text.rfind('\n', start - 1);
    return start == std::string::npos || start == 0 ? text : text.substr(start + 1);
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : pid_(std::exchange(other.pid_, -1)),
      input_(std::exchange(other.input_, -1)),
      messages_(std::exchange(other.messages_, -1)) {}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
    std::swap(pid_, other.pid_);
    std::swap(input_, other.input_);
    std::swap(messages_, other.messages_);
    return *this;
}

ChildProcess::~ChildProcess() {
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        wait();
    }
    if (input_ >= 0) close(input_);
    if (messages_ >= 0) close(messages_);
}

}  // namespace stage
