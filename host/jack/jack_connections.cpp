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

namespace vanta {
namespace {

using Names = std::vector<std::string>;

std::string clientOf(const std::string& port) {
    return port.substr(0, port.find(':'));
}

/// The ports that one of ours can be connected with, but for those of its own client.
Names partnersOf(jack_client_t& client, const jack_port_t* ours, unsigned long further = 0) {
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

Failure unknown(const std::string& name, const Names& partners) {
    Names known{kPhysicalPorts};
    for (const std::string& port : partners) {
        if (std::ranges::find(known, clientOf(port)) == known.end()) known.push_back(clientOf(port));
    }
    Names all = partners;
    all.insert(all.end(), known.begin(), known.end());
    const std::string meant = nearMiss(name, all);
    return Failure(fmt::format("there is no port to connect with called '{}'{}: use a port, or all of {}",
                               name, meant.empty() ? "" : fmt::format(" (did you mean {}?)", meant),
                               fmt::join(known, ", ")));
}

bool add(Names found, Names& to) {
    to.insert(to.end(), found.begin(), found.end());
    return !found.empty();
}

/// Appends what `name` means. False if it means nothing.
bool addNamed(const std::string& name, const Names& partners, const Names& physical, Names& to) {
    if (name == kPhysicalPorts && add(physical, to)) return true;
    Names found;
    std::ranges::copy_if(partners, std::back_inserter(found),
                         [&](const std::string& port) { return port == name || clientOf(port) == name; });
    return add(std::move(found), to);
}

Names portsNamed(std::span<const std::string> named, const Names& partners, const Names& physical) {
    Names ports;
    for (const std::string& text : named) {
        // A port's own name may have commas.
        if (addNamed(text, partners, physical, ports)) continue;
        std::istringstream parts(text);
        for (std::string part; std::getline(parts, part, ',');) {
            const std::string name(trimmed(part));
            if (!addNamed(name, partners, physical, ports)) throw unknown(name, partners);
        }
    }
    return ports;
}

void connect(jack_client_t& client, const std::string& from, const std::string& to) {
    const int result = jack_connect(&client, from.c_str(), to.c_str());
    if (result != 0 && result != EEXIST)
        throw Failure(fmt::format("the JACK server does not connect {} with {}", from, to));
}

}  // namespace

void connectPorts(jack_client_t& client, std::span<jack_port_t* const> ours,
                  std::span<const std::string> named) {
    if (ours.empty() || named.empty()) return;
    const Names others = portsNamed(named, partnersOf(client, ours.front()),
                                    partnersOf(client, ours.front(), JackPortIsPhysical));
    for (std::size_t i = 0; i < std::min(ours.size(), others.size()); ++i) {
        const std::string own = jack_port_name(ours[i]);
        const bool isInput = jack_port_flags(ours[i]) & JackPortIsInput;
        connect(client, isInput ? others[i] : own, isInput ? own : others[i]);
    }
}

}  // namespace vanta
