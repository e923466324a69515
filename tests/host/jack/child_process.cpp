#include "tests/host/jack/child_process.hpp"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

#include "tests/support/temp_folder.hpp"

namespace vanta::test {

ChildProcess::ChildProcess(const std::vector<std::string>& commandLine, std::filesystem::path output)
    : output_(std::move(output)) {
    std::vector<char*> arguments;
    for (const std::string& word : commandLine) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    // Emptied before anybody looks for what it prints.
    const int file = ::open(output_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    pid_ = ::fork();
    if (pid_ != 0) ::close(file);
    if (pid_ < 0) throw std::runtime_error("no process can be started");
    if (pid_ > 0) return;
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    ::dup2(file, 1);
    ::dup2(file, 2);
    ::execvp(arguments.front(), arguments.data());
    ::_exit(127);
}

ChildProcess::~ChildProcess() {
    if (!isRunning()) return;
    signal(SIGTERM);
    if (wait() != -2) return;
    signal(SIGKILL);
    wait();
}

void ChildProcess::signal(int number) const {
    ::kill(pid_, number);
}

bool ChildProcess::isRunning() {
    hasEnded_ = hasEnded_ || ::waitpid(pid_, &status_, WNOHANG) == pid_;
    return !hasEnded_;
}

int ChildProcess::wait() {
    if (!within(std::chrono::seconds(20), [this] { return !isRunning(); })) return -2;
    return WIFEXITED(status_) ? WEXITSTATUS(status_) : -1;
}

std::string ChildProcess::printed() const {
    return readBytes(output_);
}

}  // namespace vanta::test
