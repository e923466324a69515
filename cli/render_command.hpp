#pragma once

#include <optional>
#include <string>

#include "cli/command.hpp"
#include "cli/render_arguments.hpp"
#include "limiter/styles/style_patch.hpp"

namespace vanta {

/// `vanta render`: renders all files. A file that fails does not keep the others from being written.
Command declareRender(CLI::App& program);

/// A style of the user's own, and the file that it was read from.
struct RenderPatch {
    StylePatch style;
    std::string file;
};

/// What `vanta render` does once its words are read, with a patch in place of the style if there is one. The
/// result is an ExitCode.
int runRender(RenderArguments arguments, std::optional<RenderPatch> patch = {});

}  // namespace vanta
