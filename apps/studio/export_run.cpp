#include "export_run.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <nlohmann/json.hpp>
#include <utility>

#include "document/file_paths.h"
#include "stage/output/whole_file.h"

extern char** environ;

namespace tovu {

namespace {

namespace fs = std::filesystem;
using stage::Error;
using stage::Result;

fs::path render_program() {
    std::error_code ignored;
    return fs::read_symlink("/proc/self/exe", ignored).parent_path() / "tovu";
}

// Starts the program. Returns 0 or an error number.
int spawn(const std::vector<std::string>& arguments, int messages, pid_t& pid) {
    std::vector<char*> argv;
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, messages, STDERR_FILENO);
    const int failure = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return failure;
}

std::string replaced(std::string text, const std::string& old_part, const std::string& new_part) {
    for (size_t at = text.find(old_part); at != std::string::npos; at = text.find(old_part, at + new_part.size()))
        text.replace(at, old_part.size(), new_part);
    return text;
}

}  // namespace

Result<ExportRun> ExportRun::start(const ExportOrder& order) {
    ExportRun run;
    std::string folder = (fs::temp_directory_path() / "tovu-export-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr)
        return Error{fmt::format("{}: cannot be created: {}", folder, std::strerror(errno))};
    run.folder_ = folder;
    run.scene_name_ = order.scene_file.string();
    const fs::path scene = run.folder_ / "scene.toml";
    const std::string text = with_moved_files(order.scene_text, order.scene_file.parent_path(), run.folder_);
    if (const auto written = stage::write_whole_file(scene, text); !written) return written.error();
    std::vector<std::string> arguments = {render_program().string(), "render",     scene.string(), "-o",
                                          order.output.string(),     "--progress", "json"};
    if (!order.frames.empty()) arguments.insert(arguments.end(), {"--frames", order.frames});
    if (!order.plugin.empty()) arguments.insert(arguments.end(), {"--plugin", order.plugin});
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return Error{fmt::format("no pipe for the export: {}", std::strerror(errno))};
    run.messages_ = ends[0];
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    const int failure = spawn(arguments, ends[1], run.pid_);
    close(ends[1]);
    if (failure != 0) {
        run.pid_ = -1;
        return Error{fmt::format("{} cannot be started: {}", arguments[0], std::strerror(failure))};
    }
    return run;
}

ExportRun::ExportRun(ExportRun&& other) noexcept
    : pid_(std::exchange(other.pid_, -1)),
      messages_(std::exchange(other.messages_, -1)),
      folder_(std::exchange(other.folder_, {})),
      scene_name_(std::move(other.scene_name_)),
      unread_(std::move(other.unread_)),
      mistakes_(std::move(other.mistakes_)),
      state_(std::move(other.state_)) {}

ExportRun& ExportRun::operator=(ExportRun&& other) noexcept {
    ExportRun old(std::move(*this));
    std::swap(pid_, other.pid_);
    std::swap(messages_, other.messages_);
    std::swap(folder_, other.folder_);
    std::swap(scene_name_, other.scene_name_);
    std::swap(unread_, other.unread_);
    std::swap(mistakes_, other.mistakes_);
    std::swap(state_, other.state_);
    return *this;
}

ExportRun::~ExportRun() {
    cancel();
    if (messages_ >= 0) close(messages_);
    std::error_code ignored;
    if (!folder_.empty()) fs::remove_all(folder_, ignored);
}

void ExportRun::take_line(std::string line) {
    const auto json = nlohmann::json::parse(line, nullptr, false);
    if (json.contains("error")) {
        line = json.value("error", line);
    } else if (json.contains("warning")) {
        line = "warning: " + json.value("warning", line);
    } else if (json.is_object()) {
        state_.frames_done = json.value("frame", 0);
        state_.frames_total = json.value("frames", 0);
        state_.seconds_left = json.value("seconds_left", 0.0);
        return;
    }
    line = replaced(line, (folder_ / "scene.toml").string(), scene_name_);
    mistakes_.push_back(std::move(line));
}

void ExportRun::take_lines() {
    char bytes[4096];
    for (ssize_t count = 0; (count = read(messages_, bytes, sizeof bytes)) > 0;)
        unread_.append(bytes, static_cast<size_t>(count));
    for (size_t end = 0; (end = unread_.find('\n')) != std::string::npos; unread_.erase(0, end + 1))
        take_line(unread_.substr(0, end));
}

void ExportRun::end(int status) {
    pid_ = -1;
    state_.ended = true;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        state_.error = mistakes_.empty() ? "the render was ended" : fmt::format("{}", fmt::join(mistakes_, "\n"));
    else
        state_.warnings = mistakes_;
}

const ExportState& ExportRun::follow() {
    if (pid_ < 0) return state_;
    int status = 0;
    const bool has_ended = waitpid(pid_, &status, WNOHANG) == pid_;
    take_lines();
    if (has_ended) end(status);
    return state_;
}

void ExportRun::cancel() {
    if (pid_ < 0) return;
    kill(pid_, SIGTERM);
    int status = 0;
    while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    take_lines();
    end(status);
    if (!state_.error.empty()) state_.error = "cancelled";  // an export that is already complete has no error
}

}  // namespace tovu
