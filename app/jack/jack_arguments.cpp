#include "app/jack/jack_arguments.hpp"

#include "app/jack/texts.hpp"
#include "cli/option_declarer.hpp"

namespace vanta {

void JackArguments::declareTo(CLI::App& app) {
    OptionDeclarer add(app, text::kJackOptions);
    add.option("--name", server.clientName);
    add.option("--server", server.serverName);
    add.flag("--start-server", server.start);
    add.option("--layout", layout);
    add.flag("--side-chain", sideChain);
    const auto list = [&add](const std::string& flag, std::vector<std::string>& ports) {
        add.option(flag, ports)
            ->allow_extra_args(false)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    };
    list("--connect", connect);
    list("--connect-in", connectIn);
    list("--connect-out", connectOut);
    list("--connect-side-chain", connectSideChain);
    list("--connect-midi", connectMidi);
    settings.declareTo(app);
    add.option("--session", session);
    add.option("--save", save);
    add.flag("--gui", gui);
    add.flag("--list-layouts", listLayouts);
}

}  // namespace vanta
