#include "app/jack/jack_program.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <chrono>
#include <memory>
#include <thread>

#include "app/jack/jack_arguments.hpp"
#include "app/jack/jack_service.hpp"
#include "app/jack/save_requests.hpp"
#include "app/jack/session.hpp"
#include "app/jack/tell.hpp"
#include "app/jack/texts.hpp"
#include "app/window/app_window.hpp"
#include "cli/chosen_layout.hpp"
#include "cli/exit_code.hpp"
#include "cli/help_format.hpp"
#include "cli/interrupt.hpp"
#include "cli/messages.hpp"
#include "cli/parsing.hpp"
#include "foundation/failure.hpp"
#include "host/common/product_identity.hpp"
#include "host/jack/jack_client.hpp"
#include "host/jack/jack_connections.hpp"
#include "host/jack/port_names.hpp"

namespace vanta {

namespace {

using namespace std::chrono_literals;

void tellWhatRuns(JackClient& client) {
    const HostedPlugin& plugin = client.plugin();
    std::string inputs;
    const auto append = [&inputs](jack_port_t* port) {
        inputs += fmt::format(" {}", jack_port_short_name(port));
    };
    for (jack_port_t* const port : client.ports().inputs()) append(port);
    for (jack_port_t* const port : client.ports().sideChain()) append(port);
    append(client.ports().midi());
    std::string outputs;
    for (jack_port_t* const port : client.ports().outputs())
        outputs += fmt::format(" {}", jack_port_short_name(port));
    tell("{}: {} at {} Hz, {},{} ->{}\n", client.name(), channelLayoutName(plugin.layout()),
         plugin.sampleRate(), latencyText(plugin), inputs, outputs);
}

void tellLayouts() {
    for (ChannelLayout layout = 0; layout < kChannelLayoutCount; ++layout)
        tell("{:10} {}\n", channelLayoutName(layout), fmt::join(portSpeakers(layout), " "));
}

void connectAll(JackClient& client, const JackArguments& wanted) {
    const JackPorts& ports = client.ports();
    jack_port_t* const midi[] = {ports.midi()};
    connectBothWays(client.jack(), ports.inputs(), ports.outputs(), wanted.connect);
    connectPorts(client.jack(), ports.inputs(), wanted.connectIn);
    connectPorts(client.jack(), ports.outputs(), wanted.connectOut);
    connectPorts(client.jack(), ports.sideChain(), wanted.connectSideChain);
    connectPorts(client.jack(), midi, wanted.connectMidi);
}

void runUntilEnd(JackService& service, const JackClient& client) {
    while (!service.hasEnded()) {
        service.pump();
        // While JACK renders as fast as it can, what MIDI asks for is wanted sooner.
        std::this_thread::sleep_for(client.isFreewheeling() ? 1ms : 5ms);
    }
}

/// It comes before the server is asked for anything, as it may not come at all.
std::unique_ptr<AppWindow> openWindow(JackService& service, const std::string& name) {
    const GenericPlugin& model = service.plugin().model();
    gui::X11Settings settings;
    settings.title = name + " - Vanta 2";
    settings.width = static_cast<float>(model.interfaceWidth());
    settings.height = static_cast<float>(model.interfaceHeight());
    try {
        return std::make_unique<AppWindow>(service, settings);
    } catch (const std::runtime_error& error) {
        throw Failure(
            fmt::format("--gui needs a display: {}. Set DISPLAY, or leave out --gui", error.what()));
    }
}

int run(const JackArguments& arguments) {
    if (arguments.listLayouts) return tellLayouts(), kExitDone;
    if (!arguments.sideChain && !arguments.connectSideChain.empty())
        throw UsageError("--connect-side-chain needs --side-chain");
    watchForInterrupts();
    watchForSaveRequests();
    JackClient client(chosenLayout(arguments.layout).value_or(kStereoLayout), arguments.sideChain);
    const Session session(client.plugin(), arguments);
    JackService service(client, session);
    const auto window = arguments.gui ? openWindow(service, arguments.server.clientName) : nullptr;
    client.open(arguments.server);
    connectAll(client, arguments);
    client.pump();
    tellWhatRuns(client);
    service.opened();
    const int code = reportErrors([&] {
        if (window) {
            window->run();
        } else {
            runUntilEnd(service, client);
        }
        service.throwWhatEndedIt();
        return kExitDone;
    });
    // However it ended, what was set is kept.
    if (!session.file().empty()) session.save();
    if (client.xruns() > 0) tell("{}: {} xruns\n", client.name(), client.xruns());
    return code;
}

}  // namespace

int runJackProgram(const std::vector<std::string>& arguments) {
    return reportErrors([&] {
        CLI::App app(std::string(text::kJack), "vanta-jack");
        JackArguments wanted;
        wanted.declareTo(app);
        app.formatter(std::make_shared<HelpFormat>());
        app.set_version_flag("--version", fmt::format("vanta-jack {}", productIdentity().version),
                             "print the version")
            ->group("Options");
        app.set_help_flag("--help", "show this help")->group("Options");
        app.footer(std::string(text::kJackExamples));
        if (const auto done = parseArguments(app, arguments)) return *done;
        return run(wanted);
    });
}

}  // namespace vanta
