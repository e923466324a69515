#include "host/jack/jack_server.hpp"

#include <fmt/format.h>

#include "foundation/failure.hpp"

namespace vanta {
namespace {

void ignore(const char*) {}

Failure refusal(const JackServer& server, jack_status_t status) {
    const std::string which =
        server.serverName.empty() ? "no JACK server" : fmt::format("no JACK server '{}'", server.serverName);
    if (status & JackVersionError)
        return Failure("the JACK server is of another version than its library: install both anew");
    if (status & JackShmFailure)
        return Failure(
            "the JACK server's shared memory cannot be reached: run as the user whose server it is");
    if (status & JackServerFailed) {
        if (server.start)
            return Failure(
                fmt::format("{} runs and none could be started: try 'jackd -d alsa' to see why", which));
        return Failure(
            fmt::format("{} runs: start one (with QjackCtl, or 'jackd -d alsa') or use --start-server; where "
                        "PipeWire plays sound, use 'pw-jack vanta-jack'",
                        which));
    }
    return Failure(fmt::format("the JACK server refuses the client '{}' (status {:#x}): use another --name",
                               server.clientName, static_cast<unsigned>(status)));
}

}  // namespace

JackConnection openJack(const JackServer& server) {
    jack_set_error_function(ignore);
    jack_set_info_function(ignore);
    const int start = server.start ? JackNullOption : JackNoStartServer;
    const int named = server.serverName.empty() ? JackNullOption : JackServerName;
    const auto options = static_cast<jack_options_t>(start | named);
    jack_status_t status{};
    // Without the option, the name is not looked at.
    JackConnection client(
        jack_client_open(server.clientName.c_str(), options, &status, server.serverName.c_str()));
    if (!client) throw refusal(server, status);
    return client;
}

}  // namespace vanta
