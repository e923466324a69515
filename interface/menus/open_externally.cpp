#include "interface/menus/open_externally.hpp"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace vanta::interface {
namespace {

constexpr const char* kOpener = "xdg-open";

/// In the grandchild: only what may be called between fork and exec of a process with several threads.
[[noreturn]] void runOpener(const char* argument, int report) {
    ::setsid();
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::signal(SIGPIPE, SIG_DFL);
    if (const int nothing = ::open("/dev/null", O_RDWR); nothing >= 0) {
        for (int stream = 0; stream < 3; ++stream) ::dup2(nothing, stream);
    }
    ::execlp(kOpener, kOpener, argument, static_cast<char*>(nullptr));
    const char failed = 1;
    [[maybe_unused]] const ssize_t written = ::write(report, &failed, 1);
    ::_exit(127);
}

}  // namespace

bool openExternally(const std::string& fileOrAddress) {
    // Nothing that it could take for one of its options.
    if (fileOrAddress.empty() || fileOrAddress.front() == '-') return false;
    int report[2];
    if (::pipe2(report, O_CLOEXEC) != 0) return false;
    const pid_t child = ::fork();
    if (child == 0) {
        // The child of a child that has gone belongs to init: the host's process gets no zombie.
        const pid_t grandchild = ::fork();
        if (grandchild == 0) runOpener(fileOrAddress.c_str(), report[1]);
        ::_exit(grandchild < 0 ? 1 : 0);
    }
    ::close(report[1]);
    int status = 1;
    if (child > 0) {
        while (::waitpid(child, &status, 0) < 0) {
            if (errno == EINTR) continue;
            status = 0;  // a host that ignores its children has taken the status
            break;
        }
    }
    // The pipe closes when the program starts; otherwise its failure comes through.
    char failed = 0;
    ssize_t count = 0;
    while ((count = ::read(report[0], &failed, 1)) < 0 && errno == EINTR) {
    }
    ::close(report[0]);
    return child > 0 && status == 0 && count == 0;
}

}  // namespace vanta::interface
