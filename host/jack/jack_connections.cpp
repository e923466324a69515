#include "host/jack/jack_connections.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cerrno>
#include <sstream>
#include <vector>

#include "foundation/ascii.hpp"
#include "foundation/failure.hpp"
#include "foundation/near_miss.hpp"
#include "host/jack/jack_ports.hpp"

namespace vanta {
namespace {

using Names = std::vector<std::string>;

std::string clientOf(const std::string& port) {
    return port.substr(0, port.find(':'));
}

Names portsOf(jack_client_t& client, const jack_port_t* ours, unsigned long further) {
    const bool isInput = jack_port_flags(ours) & JackPortIsInput;
    const unsigned long flags = (isInput ? JackPortIsOutput : JackPortIsInput) | further;
    const char** const found = jack_get_ports(&client, nullptr, jack_port_type(ours), flags);
    Names names;
    for (const char** name = found; name && *name; ++name) names.emplace_back(*name);
    jack_free(found);
    std::erase_if(names, [own = std::string(jack_get_client_name(&client))](const std::string& name) {
        return clientOf(name) == own;
    });
    return names;
}

/// What ports of ours of one kind can be connected with: the ports of all other clients.
class Partners {
public:
    Partners(jack_client_t& client, std::span<jack_port_t* const> ours)
        : client_(client), ours_(ours.begin(), ours.end()) {
        if (ours_.empty()) return;
        all_ = portsOf(client, ours_.front(), 0);
        physical_ = portsOf(client, ours_.front(), JackPortIsPhysical);
    }

    Names called(const std::string& name) const {
        if (name == kPhysicalPorts && !physical_.empty()) return physical_;
        Names found;
        std::ranges::copy_if(all_, std::back_inserter(found),
                             [&](const std::string& port) { return port == name || clientOf(port) == name; });
        return found;
    }
    const Names& all() const { return all_; }
    void connectWith(const Names& others) const;

private:
    jack_client_t& client_;
    JackPorts::Ports ours_;
    Names all_;
    Names physical_;
};

Failure unknown(const std::string& name, std::span<const Partners> sides) {
    Names ports;
    Names clients;
    for (const Partners& side : sides) {
        for (const std::string& port : side.all()) {
            ports.push_back(port);
            if (std::ranges::find(clients, clientOf(port)) == clients.end())
                clients.push_back(clientOf(port));
        }
    }
    if (clients.empty())
        return Failure(fmt::format("cannot connect with '{}': no other client has ports for it", name));
    if (name == kPhysicalPorts)
        return Failure(
            fmt::format("the server has no physical ports: connect with {}", fmt::join(clients, ", ")));
    ports.insert(ports.end(), clients.begin(), clients.end());
    const std::string meant = nearMiss(name, ports);
    return Failure(fmt::format("unknown port or client '{}'{}: connect with a port, or all of {}", name,
                               meant.empty() ? "" : fmt::format(" (did you mean {}?)", meant),
                               fmt::join(clients, ", ")));
}

void connectSides(std::span<const Partners> sides, std::span<const std::string> named) {
    std::vector<Names> others(sides.size());
    const auto add = [&](const std::string& name) {
        bool isKnown = false;
        for (std::size_t i = 0; i < sides.size(); ++i) {
            const Names found = sides[i].called(name);
            others[i].insert(others[i].end(), found.begin(), found.end());
            isKnown = isKnown || !found.empty();
        }
        return isKnown;
    };
    for (const std::string& text : named) {
        // A port's own name may have commas.
        if (add(text)) continue;
        std::istringstream parts(text);
        for (std::string part; std::getline(parts, part, ',');) {
            const std::string name(trimmed(part));
            if (!add(name)) throw unknown(name, sides);
        }
    }
    for (std::size_t i = 0; i < sides.size(); ++i) sides[i].connectWith(others[i]);
}

void connect(jack_client_t& client, const std::string& from, const std::string& to) {
    const int result = jack_connect(&client, from.c_str(), to.c_str());
    if (result != 0 && result != EEXIST)
        throw Failure(fmt::format("the JACK server does not connect {} with {}", from, to));
}

void Partners::connectWith(const Names& others) const {
    for (std::size_t i = 0; i < std::min(ours_.size(), others.size()); ++i) {
        const std::string own = jack_port_name(ours_[i]);
        const bool isInput = jack_port_flags(ours_[i]) & JackPortIsInput;
        connect(client_, isInput ? others[i] : own, isInput ? own : others[i]);
    }
}

}  // namespace

void connectPorts(jack_client_t& client, std::span<jack_port_t* const> ours,
                  std::span<const std::string> named) {
    if (named.empty()) return;
    const Partners sides[] = {{client, ours}};
    connectSides(sides, named);
}

void connectBothWays(jack_client_t& client, std::span<jack_port_t* const> inputs,
                     std::span<jack_port_t* const> outputs, std::span<const std::string> named) {
    if (named.empty()) return;
    const Partners sides[] = {{client, inputs}, {client, outputs}};
    connectSides(sides, named);
}

}  // namespace vanta
