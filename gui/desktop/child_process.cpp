#include "gui/desktop/child_process.hpp"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace vanta::gui {
namespace {

/// Bytes; a path is much shorter, and more is not kept.
constexpr std::size_t kGreatestOutput = 1 << 16;

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

std::string nameOf(const std::string& setting) {
    return setting.substr(0, setting.find('=') + 1);
}

std::vector<std::string> environmentWith(const std::vector<std::string>& changes) {
    std::vector<std::string> all = changes;
    for (char** setting = environ; *setting; ++setting) {
        const std::string name = nameOf(*setting);
        if (std::none_of(changes.begin(), changes.end(),
                         [&](const std::string& change) { return nameOf(change) == name; }))
            all.emplace_back(*setting);
    }
    return all;
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& arguments,
                           const std::vector<std::string>& environment) {
    start(arguments, environment);
    if (process_ < 0) status_ = kNotStarted;
}

void ChildProcess::start(const std::vector<std::string>& arguments,
                         const std::vector<std::string>& environment) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return;
    pipe_ = ends[0];
    fcntl(pipe_, F_SETFL, O_NONBLOCK);

    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&files, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);
    // A host may block or ignore signals that the program needs.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    std::vector<std::string> words = arguments;
    std::vector<std::string> settings = environmentWith(environment);
    pid_t process = -1;
    const int error = posix_spawnp(&process, words.front().c_str(), &files, &attributes,
                                   pointersTo(words).data(), pointersTo(settings).data());
    if (error == 0) process_ = process;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    close(ends[1]);
}

ChildProcess::~ChildProcess() {
    if (process_ >= 0 && !poll()) {
        // Not waited for yet, so the number is nobody else's.
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    if (pipe_ >= 0) close(pipe_);
}

void ChildProcess::readOutput() {
    std::array<char, 4096> block{};
    while (true) {
        const ssize_t count = read(pipe_, block.data(), block.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return;
        const std::size_t room = kGreatestOutput - output_.size();
        output_.append(block.data(), std::min(static_cast<std::size_t>(count), room));
    }
}

std::optional<int> ChildProcess::poll() {
    if (status_) return status_;
    int status = 0;
    const pid_t ended = waitpid(process_, &status, WNOHANG);
    // What it wrote before its end is in the pipe by now.
    readOutput();
    if (ended == 0 || (ended < 0 && errno == EINTR)) return std::nullopt;
    status_ = ended == process_ && WIFEXITED(status) ? WEXITSTATUS(status) : kUnknown;
    return status_;
}

}  // namespace vanta::gui
