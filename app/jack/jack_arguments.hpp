#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "cli/settings_arguments.hpp"
#include "host/jack/jack_server.hpp"

namespace vanta {

/// What a command line asks for, before it is understood.
struct JackArguments {
    void declareTo(CLI::App& app);

    JackServer server;
    std::string layout;
    bool sideChain = false;
    bool listLayouts = false;
    bool gui = false;

    // In the words of connectPorts.
    std::vector<std::string> connect;  ///< both ways
    std::vector<std::string> connectIn;
    std::vector<std::string> connectOut;
    std::vector<std::string> connectSideChain;
    std::vector<std::string> connectMidi;

    SettingsArguments settings;
    std::string session;
    std::string save;
};

}  // namespace vanta
