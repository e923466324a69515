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

/// Where leaks are looked for: libvorbisenc keeps a piece of each set-up for surround, and fontconfig its
/// configuration.
void excuseLeaks(const TempFolder& output) {
    const std::string file = output / "leaks";
    writeBytes(file, "leak:vorbis_encode_setup_init\nleak:libfontconfig\n");
    ::setenv("LSAN_OPTIONS", ("print_suppressions=0:suppressions=" + file).c_str(), 1);
}

/// The child's output goes to files outside of the folder, which is to hold nothing but audio.
pid_t start(const fs::path& folder, const std::vector<std::string>& arguments, const std::string& launcher,
            const TempFolder& output) {
    const std::string out = output / "out";
    const std::string err = output / "err";
    // The shell hands its own arguments on, whatever characters are in them.
    const std::string command = launcher + " " VANTA_PROGRAM " \"$@\"";
    std::vector<const char*> shell{"sh", "-c", command.c_str(), "sh"};
    for (const std::string& argument : arguments) shell.push_back(argument.c_str());
    shell.push_back(nullptr);
    excuseLeaks(output);
    const pid_t child = ::fork();
    if (child < 0) throw std::runtime_error("no process can be started");
    if (child == 0) {
        const int flags = O_WRONLY | O_CREAT | O_TRUNC;
        const bool ready = ::chdir(folder.c_str()) == 0 && ::dup2(::open(out.c_str(), flags, 0600), 1) == 1 &&
                           ::dup2(::open(err.c_str(), flags, 0600), 2) == 2;
        if (ready) ::execv("/bin/sh", const_cast<char* const*>(shell.data()));
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
    return finish(start(folder, arguments, launcher, output), output);
}

ProgramRun interruptProgram(const fs::path& folder, const std::vector<std::string>& arguments, int signal) {
    const TempFolder output;
    const pid_t child = start(folder, arguments, "exec", output);
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
