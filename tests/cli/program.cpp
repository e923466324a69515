#include "tests/cli/program.hpp"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <csignal>

#include <chrono>
#include <cstdlib>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "tests/support/sound_files.hpp"

namespace vanta::test {

namespace fs = std::filesystem;

namespace {

std::string quoted(const std::string& text) {
    std::string result(1, '\'');
    for (const char c : text) {
        if (c == '\'') {
            result.append("'\\''");
        } else {
            result.push_back(c);
        }
    }
    result.push_back('\'');
    return result;
}

std::string commandOf(const std::string& launcher, const std::vector<std::string>& arguments) {
    std::string command = launcher + " " VANTA_PROGRAM;
    for (const std::string& argument : arguments) command.append(1, ' ').append(quoted(argument));
    return command;
}

/// Where leaks are looked for: libvorbisenc keeps a piece of each set-up for surround, and fontconfig its
/// configuration.
void excuseLeaks(const TempFolder& output) {
    const std::string file = output / "leaks";
    writeBytes(file, "leak:vorbis_encode_setup_init\nleak:libfontconfig\n");
    ::setenv("LSAN_OPTIONS", ("print_suppressions=0:suppressions=" + file).c_str(), 1);
}

/// The child's output goes to files outside of the folder, which is to hold nothing but audio.
pid_t start(const fs::path& folder, const std::string& command, const TempFolder& output) {
    const std::string out = output / "out";
    const std::string err = output / "err";
    excuseLeaks(output);
    const pid_t child = ::fork();
    if (child < 0) throw std::runtime_error("no process can be started");
    if (child == 0) {
        const int flags = O_WRONLY | O_CREAT | O_TRUNC;
        const bool ready = ::chdir(folder.c_str()) == 0 && ::dup2(::open(out.c_str(), flags, 0600), 1) == 1 &&
                           ::dup2(::open(err.c_str(), flags, 0600), 2) == 2;
        if (ready) ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
        ::_exit(127);
    }
    return child;
}

ProgramRun finish(pid_t child, const TempFolder& output) {
    int status = 0;
    ::waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readBytes(output / "out"),
            readBytes(output / "err")};
}

bool renderHasBegun(const fs::path& folder) {
    for (const auto& entry : fs::directory_iterator(folder)) {
        std::error_code gone;
        const bool temporary = entry.path().extension() == ".tmp";
        if (temporary && fs::file_size(entry.path(), gone) > 4096 && !gone) return true;
    }
    return false;
}

}  // namespace

std::vector<std::string> words(const std::string& commandLine) {
    std::istringstream stream(commandLine);
    return {std::istream_iterator<std::string>(stream), {}};
}

ProgramRun runProgram(const fs::path& folder, const std::vector<std::string>& arguments,
                      const std::string& launcher) {
    const TempFolder output;
    return finish(start(folder, commandOf(launcher, arguments), output), output);
}

ProgramRun interruptProgram(const fs::path& folder, const std::vector<std::string>& arguments, int signal) {
    const TempFolder output;
    const pid_t child = start(folder, commandOf("exec", arguments), output);
    bool begun = false;
    for (int i = 0; i < 20000 && !begun; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        begun = renderHasBegun(folder);
    }
    ::kill(child, signal);
    ProgramRun run = finish(child, output);
    if (!begun) run.code = -1;
    return run;
}

}  // namespace vanta::test
