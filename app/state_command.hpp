#pragma once

#include <string>

#include "app/render_command.hpp"

namespace vanta {

/// What the command line of `vanta state` says.
struct StateCommand {
    std::string file;
    RenderCommand settings;  ///< of which only the settings count
    bool replace = false;
    bool json = false;
};

/// Stores the state of an instance with the given settings; what they do not touch stays as in the state that
/// they start from.
int runStateSave(const StateCommand& command);
/// Prints a state, see `stateText`.
int runStateShow(const StateCommand& command);

}  // namespace vanta
