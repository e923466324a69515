#include "host/lv2/lv2_ports.hpp"

#include <lv2/core/lv2.h>

#include <string_view>

#include "host/lv2/lv2_layouts.hpp"

namespace vanta {
namespace {

void addChannels(std::vector<Lv2Port>& ports, Lv2PortKind kind, ChannelLayout layout,
                 const std::string& symbol, const std::string& name) {
    for (const Lv2Channel& channel : lv2Channels(layout)) {
        ports.push_back({kind, static_cast<std::size_t>(channel.channel),
                         symbol + "_" + std::string(channel.symbol), name + " " + std::string(channel.name),
                         channel.designation});
    }
}

}  // namespace

std::vector<Lv2Port> lv2Ports(ChannelLayout layout, const std::vector<HostParameter>& parameters) {
    std::vector<Lv2Port> ports;
    for (const HostParameter& parameter : parameters) {
        const auto index = static_cast<std::size_t>(parameter.index);
        if (parameter.isBypass) {
            ports.push_back({Lv2PortKind::Parameter, index, "enabled", "Enabled", LV2_CORE__enabled});
        } else {
            ports.push_back({Lv2PortKind::Parameter, index, parameter.symbol, parameter.name, {}});
        }
    }
    ports.push_back({Lv2PortKind::Latency, 0, "latency", "Latency", LV2_CORE__latency});
    ports.push_back({Lv2PortKind::FreeWheeling, 0, "freewheel", "Free-wheeling", LV2_CORE__freeWheeling});
    ports.push_back({Lv2PortKind::Events, 0, "control", "MIDI and Transport", LV2_CORE__control});
    ports.push_back({Lv2PortKind::Notify, 0, "notify", "Notifications", {}});
    addChannels(ports, Lv2PortKind::Input, layout, "in", "Input");
    addChannels(ports, Lv2PortKind::SideChain, layout, "sidechain", "Side Chain");
    addChannels(ports, Lv2PortKind::Output, layout, "out", "Output");
    return ports;
}

}  // namespace vanta
