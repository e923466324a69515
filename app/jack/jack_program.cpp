#include "app/jack/jack_program.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <thread>

#include "app/jack/jack_arguments.hpp"
#include "app/jack/save_requests.hpp"
#include "app/jack/session.hpp"
#include "app/jack/texts.hpp"
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

/// Whoever reads this may be another program.
template <typename... Values>
void tell(fmt::format_string<Values...> text, Values&&... values) {
    fmt::print(text, std::forward<Values>(values)...);
    std::fflush(stdout);
}

std::string latencyText(const HostedPlugin& plugin) {
    return fmt::format("latency {} samples ({:.1f} ms)", plugin.latency(),
                       1000.0 * plugin.latency() / plugin.sampleRate());
}

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

/// Whoever asked for it goes on, as what could not be saved is still there.
void saveOnRequest(const Session& session, const JackClient& client) {
    if (session.file().empty()) return printError("there is nothing to save to: use --session or --save");
    try {
        session.save();
        tell("{}: saved {}\n", client.name(), session.file().string());
    } catch (const Failure& failure) {
        printFailure(failure);
    }
}

void runUntilEnd(JackClient& client, const Session& session) {
    while (!interruptRequested()) {
        if (client.pump())
            tell("{}: {} Hz, {}\n", client.name(), client.plugin().sampleRate(),
                 latencyText(client.plugin()));
        if (const auto reason = client.whyServerHasGone())
            throw Failure(
                fmt::format("the JACK server has gone ({}): start it, and this program, again", *reason));
        if (takeSaveRequest()) saveOnRequest(session, client);
        // While JACK renders as fast as it can, what MIDI asks for is wanted sooner.
        std::this_thread::sleep_for(client.isFreewheeling() ? 1ms : 5ms);
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
    client.open(arguments.server);
    connectAll(client, arguments);
    client.pump();
    tellWhatRuns(client);
    const int code = reportErrors([&] { return runUntilEnd(client, session), kExitDone; });
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
