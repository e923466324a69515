#include "tools/lv2_bundle/port_description.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <utility>

#include "limiter/parameters/parameter_table.hpp"
#include "tools/lv2_bundle/turtle.hpp"

namespace vanta {
namespace {

/// Room for the events of a block, in bytes.
constexpr int kEventRoom = 16384;
/// Of a block's worth of what an interface elsewhere is told.
constexpr int kNotificationRoom = 32768;

std::string withUnit(const std::string& unit) {
    constexpr auto kKnown = std::to_array<std::pair<std::string_view, std::string_view>>(
        {{"dB", "units:db"}, {"ms", "units:ms"}, {"%", "units:pc"}});
    if (unit.empty()) return {};
    const auto known = std::ranges::find(kKnown, unit, [](const auto& each) { return each.first; });
    if (known != kKnown.end()) return fmt::format(" ;\n\t\tunits:unit {}", known->second);
    const std::string name = turtle::literal(unit);
    return fmt::format(
        " ;\n\t\tunits:unit [ a units:Unit ; rdfs:label {} ; units:symbol {} ; units:render {} ]", name, name,
        turtle::literal("%f " + unit));
}

std::string withProperty(std::string_view property) {
    return fmt::format(" ;\n\t\tlv2:portProperty {}", property);
}

std::string numberOf(const Lv2Control& control, float value) {
    if (!control.described().isStepped()) return turtle::number(value);
    return fmt::format("{}", std::lround(value));
}

std::string withRange(const Lv2ControlDescription& described) {
    const Lv2Control& control = described.control;
    return fmt::format(" ;\n\t\tlv2:default {} ; lv2:minimum {} ; lv2:maximum {}",
                       numberOf(control, described.initial), numberOf(control, control.minimum()),
                       numberOf(control, control.maximum()));
}

/// What a host must know of a change while audio runs.
std::string withCost(const Lv2Control& control, const ParameterRow& row) {
    std::string text;
    if (!control.described().isAutomatable) text += withProperty("pprops:notAutomatic");
    if (!control.described().isAutomatable && !control.described().isInterface) {
        text += withProperty("pprops:expensive , pprops:causesArtifacts");
    }
    // What is only to be seen in a window of our own.
    const bool ofWindow = row.group == ParameterGroup::Interface || row.group == ParameterGroup::Loudness;
    if (control.described().isInterface && ofWindow) text += withProperty("pprops:notOnGUI");
    return text;
}

std::string withSteps(const Lv2Control& control) {
    if (!control.described().isStepped()) return {};
    if (control.isToggle()) return withProperty("lv2:toggled , lv2:integer");
    std::string text = withProperty("lv2:integer , lv2:enumeration");
    int value = static_cast<int>(control.minimum());
    for (const std::string& label : control.described().labels) {
        text += fmt::format(" ;\n\t\tlv2:scalePoint [ rdfs:label {} ; rdf:value {} ]", turtle::literal(label),
                            value++);
    }
    return text;
}

std::string ofParameter(const Lv2ControlDescription& description) {
    const Lv2Control& control = description.control;
    const HostParameter& described = control.described();
    const ParameterRow& row = kParameterTable[static_cast<std::size_t>(described.index)];
    const std::string summary = described.isBypass
                                    ? "process the input, or pass it through at the same latency"
                                    : std::string(row.summary);
    return fmt::format(" ;\n\t\trdfs:comment {} ;\n\t\tpg:group {}", turtle::literal(summary),
                       turtle::iri(parameterGroupUri(described.group))) +
           withRange(description) + withSteps(control) + withUnit(described.unit) + withCost(control, row);
}

std::string inGroup(const std::string& group) {
    return fmt::format(" ;\n\t\tpg:group {}", turtle::iri(group));
}

std::string atoms(std::string_view supported, int room) {
    return fmt::format(
               " ;\n\t\tatom:bufferType atom:Sequence ;\n\t\tatom:supports {} ;\n\t\trsz:minimumSize {}",
               supported, room) +
           withProperty("lv2:connectionOptional");
}

struct Kind {
    std::string_view types;
    std::string text;  ///< what else there is to say
};

Kind kindOf(const Lv2Port& port, const Lv2ControlDescription* control, const Lv2PortGroups& groups) {
    switch (port.kind) {
        case Lv2PortKind::Parameter:
            return {"lv2:InputPort , lv2:ControlPort", ofParameter(*control)};
        case Lv2PortKind::Latency:
            return {"lv2:OutputPort , lv2:ControlPort",
                    " ;\n\t\tlv2:default 0 ; lv2:minimum 0 ;\n\t\tunits:unit units:frame" +
                        withProperty("lv2:integer , lv2:reportsLatency , lv2:connectionOptional")};
        case Lv2PortKind::FreeWheeling:
            return {"lv2:InputPort , lv2:ControlPort",
                    " ;\n\t\tlv2:default 0 ; lv2:minimum 0 ; lv2:maximum 1" +
                        withProperty("lv2:toggled , lv2:integer , lv2:connectionOptional , pprops:notOnGUI")};
        case Lv2PortKind::Events:
            return {
                "lv2:InputPort , atom:AtomPort",
                atoms("midi:MidiEvent , time:Position , " + turtle::iri(ownTerm("ToPlugin")), kEventRoom)};
        case Lv2PortKind::Notify:
            return {"lv2:OutputPort , atom:AtomPort",
                    atoms("state:StateChanged , " + turtle::iri(ownTerm("ToInterface")), kNotificationRoom)};
        case Lv2PortKind::Input:
            return {"lv2:InputPort , lv2:AudioPort", inGroup(groups.input)};
        case Lv2PortKind::SideChain:
            return {"lv2:InputPort , lv2:AudioPort",
                    inGroup(groups.sideChain) + withProperty("lv2:connectionOptional , lv2:isSideChain")};
        case Lv2PortKind::Output:
            return {"lv2:OutputPort , lv2:AudioPort", inGroup(groups.output)};
    }
    return {};
}

}  // namespace

Lv2PortGroups::Lv2PortGroups(const Lv2Layout& layout)
    : input(layout.uri() + "#main_in"),
      sideChain(layout.uri() + "#side_chain"),
      output(layout.uri() + "#main_out") {}

std::string parameterGroupSymbol(const std::string& group) {
    std::string symbol;
    for (const char c : group) {
        const auto byte = static_cast<unsigned char>(c);
        symbol += std::isalnum(byte) ? static_cast<char>(std::tolower(byte)) : '_';
    }
    return symbol;
}

std::string parameterGroupUri(const std::string& group) {
    return ownTerm("group_" + parameterGroupSymbol(group));
}

std::string describePort(std::size_t index, const Lv2Port& port, const Lv2ControlDescription* control,
                         const Lv2PortGroups& groups) {
    const Kind kind = kindOf(port, control, groups);
    std::string text =
        fmt::format("[\n\t\ta {} ;\n\t\tlv2:index {} ;\n\t\tlv2:symbol {} ;\n\t\tlv2:name {}", kind.types,
                    index, turtle::literal(port.symbol), turtle::literal(port.name));
    if (!port.designation.empty()) {
        text += fmt::format(" ;\n\t\tlv2:designation {}", turtle::iri(port.designation));
    }
    return text + kind.text + "\n\t]";
}

}  // namespace vanta
