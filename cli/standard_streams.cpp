#include "cli/standard_streams.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "foundation/failure.hpp"

namespace vanta {

void prepareStandardStreams() {
    // The lowest number that is free is what open gives.
    for (int fd = ::open("/dev/null", O_RDWR); fd >= 0 && fd <= STDERR_FILENO;)
        fd = ::open("/dev/null", O_RDWR);
    ::signal(SIGPIPE, SIG_IGN);
}

void printOut(std::string_view text) {
    const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if (written && std::fflush(stdout) == 0) return;
    const int reason = errno;
    std::clearerr(stdout);
    if (reason != EPIPE)
        throw Failure(fmt::format("standard output cannot be written: {}", std::strerror(reason)));
}

void printOnError(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
}

void printLine(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fputc('\n', stderr);
}

}  // namespace vanta
