#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace vanta::test {

/// The words of a command line that quotes none.
std::vector<std::string> words(const std::string& commandLine);

/// What became of a run of the real program.
struct ProgramRun {
    int code = -1;  ///< exit code; -1 if it was ended by a signal
    std::string out;
    std::string err;
};

/// Runs `vanta` with these arguments in `folder`. `launcher` is the shell's text in front of its name.
ProgramRun runProgram(const std::filesystem::path& folder, const std::vector<std::string>& arguments,
                      const std::string& launcher = "exec");

/// Starts it, sends it `signal` as soon as a file whose name ends in ".tmp" grows in `folder`, and waits.
/// The code is -1 if no such file came up.
ProgramRun interruptProgram(const std::filesystem::path& folder, const std::vector<std::string>& arguments,
                            int signal);

}  // namespace vanta::test
