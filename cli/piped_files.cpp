#include "cli/piped_files.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <span>

#include "cli/exit_code.hpp"
#include "cli/interrupt.hpp"
#include "foundation/failure.hpp"
#include "foundation/progress.hpp"

namespace vanta {

namespace {

namespace fs = std::filesystem;

/// A descriptor that is closed in the end, unless it is a standard stream.
class Stream {
public:
    Stream(int descriptor, std::string name) : descriptor_(descriptor), name_(std::move(name)) {
        if (descriptor < 0) fail("be opened");
    }
    ~Stream() {
        if (descriptor_ > STDERR_FILENO) ::close(descriptor_);
    }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    std::size_t read(std::span<char> into) const {
        for (;;) {
            await(POLLIN);
            const ssize_t count = ::read(descriptor_, into.data(), into.size());
            if (count >= 0) return static_cast<std::size_t>(count);
            if (errno != EINTR) fail("be read");
        }
    }
    void write(std::span<const char> from) const {
        while (!from.empty()) {
            await(POLLOUT);
            const ssize_t count = ::write(descriptor_, from.data(), from.size());
            if (count >= 0) {
                from = from.subspan(static_cast<std::size_t>(count));
            } else if (errno != EINTR) {
                fail("be written");
            }
        }
    }

private:
    /// A pipe may have nothing to say for as long as it likes; the person at the terminal may not want to
    /// wait.
    void await(short event) const {
        pollfd polled{descriptor_, event, 0};
        while (::poll(&polled, 1, -1) < 0 && errno == EINTR) {
            if (interruptRequested()) throw Stopped();
        }
        if (interruptRequested()) throw Stopped();
    }

    [[noreturn]] void fail(std::string_view what) const {
        throw Failure(fmt::format("{}: cannot {}: {}", name_, what, std::strerror(errno)));
    }

    int descriptor_;
    std::string name_;
};

void copyAll(const Stream& from, const Stream& to) {
    std::array<char, 1 << 16> bytes;
    while (const std::size_t count = from.read(bytes)) to.write(std::span(bytes).first(count));
}

bool isPipe(const std::string& argument) {
    std::error_code error;
    return fs::is_fifo(argument, error);
}

Stream openToRead(const std::string& argument) {
    if (argument == "-") return {STDIN_FILENO, "standard input"};
    return {::open(argument.c_str(), O_RDONLY | O_CLOEXEC), argument};
}

Stream openToWrite(const std::string& argument) {
    if (argument == "-") return {STDOUT_FILENO, "standard output"};
    return {::open(argument.c_str(), O_WRONLY | O_CLOEXEC), argument};
}

Stream openFile(const fs::path& file, int mode) {
    return {::open(file.c_str(), mode | O_CLOEXEC, 0600), file.string()};
}

}  // namespace

PipedFiles::~PipedFiles() {
    std::error_code error;
    if (!folder_.empty()) fs::remove_all(folder_, error);
}

std::string PipedFiles::placeFor(const std::string& argument, std::string standardName) {
    if (folder_.empty()) {
        std::string folder = (fs::temp_directory_path() / "vanta-XXXXXX").string();
        if (!::mkdtemp(folder.data()))
            throw Failure(fmt::format("{}: cannot be made a folder: {}", folder, std::strerror(errno)));
        folder_ = folder;
    }
    const std::string name =
        argument == "-" ? std::move(standardName) : fs::path(argument).filename().string();
    const std::string file = (folder_ / name).string();
    names_[file] = argument == "-" ? name : argument;
    return file;
}

std::string PipedFiles::input(const std::string& argument) {
    if (argument != "-" && !isPipe(argument)) return argument;
    if (argument == "-" && ::isatty(STDIN_FILENO))
        throw UsageError("standard input is a terminal: pipe an audio file into it");
    std::string file = placeFor(argument, "standard input");
    copyAll(openToRead(argument), openFile(file, O_WRONLY | O_CREAT | O_TRUNC));
    return file;
}

std::string PipedFiles::output(const std::string& argument) {
    if (argument != "-" && !isPipe(argument)) return argument;
    if (argument == "-" && ::isatty(STDOUT_FILENO))
        throw UsageError("standard output is a terminal: redirect it to a file or a pipe");
    usesStandardOutput_ |= argument == "-";
    // Without an extension it becomes a WAV, unless another type is asked for.
    std::string file = placeFor(argument, "standard output");
    outgoing_[file] = argument;
    return file;
}

std::string PipedFiles::named(std::string text) const {
    for (const auto& [file, name] : names_) {
        for (std::size_t at = text.find(file); at != std::string::npos;
             at = text.find(file, at + name.size()))
            text.replace(at, file.size(), name);
    }
    return text;
}

void PipedFiles::deliver() {
    for (const auto& [file, argument] : outgoing_) {
        std::error_code error;
        if (fs::exists(file, error)) copyAll(openFile(file, O_RDONLY), openToWrite(argument));
    }
}

}  // namespace vanta
