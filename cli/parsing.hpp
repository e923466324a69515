#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vanta {

/// Fills what was declared to `app`. The exit code if that is all, as somebody wanted help or the version,
/// which it has printed. UsageError for what the parser refuses.
std::optional<int> parseArguments(CLI::App& app, const std::vector<std::string>& arguments);

/// What `run` returns; for whatever it throws, one line on stderr and the ExitCode of its kind.
int reportErrors(const std::function<int()>& run);

}  // namespace vanta
