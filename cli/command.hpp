#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace vanta {

/// A command that was declared to the parser, and what to do if the user gave it. `run` returns an ExitCode.
struct Command {
    CLI::App* app;
    std::function<int()> run;
};

}  // namespace vanta
