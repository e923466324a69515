#pragma once

#include <filesystem>

#include "app/jack/jack_arguments.hpp"
#include "host/common/hosted_plugin.hpp"

namespace vanta {

/// What an instance starts from, and the file that it leaves behind.
class Session {
public:
    /// Gives the instance the state and the settings that the arguments name. UsageError and Failure for what
    /// they name wrongly, also for a file that could not be written later.
    Session(HostedPlugin& plugin, const JackArguments& arguments);

    /// The file to be written; empty if there is none.
    const std::filesystem::path& file() const { return file_; }
    /// Writes it, whole or not at all. Failure if that cannot be done.
    void save() const;

private:
    HostedPlugin& plugin_;
    std::filesystem::path file_;
};

}  // namespace vanta
