#include "tools/lv2_bundle/plugin_description.hpp"

#include <fmt/format.h>

#include <cstdio>
#include <optional>
#include <set>
#include <stdexcept>
#include <vector>

#include "host/common/host_parameters.hpp"
#include "host/common/product_identity.hpp"
#include "host/lv2/lv2_interface_descriptors.hpp"
#include "host/lv2/lv2_port_change_request.hpp"
#include "tools/lv2_bundle/interface_description.hpp"
#include "tools/lv2_bundle/port_description.hpp"
#include "tools/lv2_bundle/turtle.hpp"

namespace vanta {
namespace {

/// A licence of its own has no page but what the product says itself; all others have one.
std::string licenseUri() {
    const std::string license = productIdentity().license;
    return license.starts_with("LicenseRef-") ? ownTerm(license) : "http://spdx.org/licenses/" + license;
}

/// LV2 counts minor and micro versions in even numbers, the odd ones being for builds between releases.
std::pair<int, int> lv2Version() {
    int major = 0;
    int minor = 0;
    int patch = 0;
    if (std::sscanf(productIdentity().version, "%d.%d.%d", &major, &minor, &patch) != 3) {
        throw std::runtime_error(
            fmt::format("'{}' is no version of three numbers", productIdentity().version));
    }
    return {2 * (100 * major + minor), 2 * patch};
}

constexpr std::string_view kHead = R"({uri}
	a lv2:Plugin , lv2:LimiterPlugin ;
	doap:name {name} ;
	doap:license {license} ;
	lv2:project {project} ;
	rdfs:comment {summary} ;
	lv2:minorVersion {minor} ;
	lv2:microVersion {micro} ;
	lv2:requiredFeature urid:map ;
	lv2:optionalFeature lv2:hardRTCapable , opts:options , bufsz:boundedBlockLength , {portRequests} ;
	opts:supportedOption bufsz:maxBlockLength , bufsz:nominalBlockLength ;
	lv2:extensionData state:interface ;
	ui:ui {interface} ;
	pg:mainInput {input} ;
	pg:mainOutput {output} ;
	lv2:port )";

std::string head(const Lv2Layout& layout, const Lv2PortGroups& groups) {
    const auto [minor, micro] = lv2Version();
    return fmt::format(
        kHead, fmt::arg("uri", turtle::iri(layout.uri())),
        fmt::arg("name", turtle::literal(fmt::format("{} ({})", productIdentity().name, layout.name()))),
        fmt::arg("license", turtle::iri(licenseUri())),
        fmt::arg("project", turtle::iri(productIdentity().uri)),
        fmt::arg("summary", turtle::literal(productIdentity().summary)), fmt::arg("minor", minor),
        fmt::arg("micro", micro), fmt::arg("portRequests", turtle::iri(kPortChangeRequestUri)),
        fmt::arg("interface", turtle::iri(lv2InterfaceUri())), fmt::arg("input", turtle::iri(groups.input)),
        fmt::arg("output", turtle::iri(groups.output)));
}

/// What stands in every file, as a host may read but one of them.
std::string describeProduct() {
    const ProductIdentity& product = productIdentity();
    return fmt::format(
               "{} a doap:Project ; doap:name {} ; doap:maintainer [ a foaf:Person ; foaf:name {} ] .\n",
               turtle::iri(product.uri), turtle::literal(product.name), turtle::literal(product.vendor)) +
           fmt::format("{} a lv2:Feature ; rdfs:label \"port change request\" ; rdfs:comment {} .\n",
                       turtle::iri(kPortChangeRequestUri),
                       turtle::literal("A plugin may ask for another value on an input port of its own.")) +
           describeMessages();
}

std::string describeGroups(const Lv2Layout& layout, const Lv2PortGroups& groups) {
    const std::string kind = turtle::iri(layout.groupUri());
    return fmt::format("{} a pg:InputGroup , {} ; lv2:symbol \"main_in\" ; lv2:name \"Input\" .\n",
                       turtle::iri(groups.input), kind) +
           fmt::format(
               "{} a pg:InputGroup , {} ; lv2:symbol \"side_chain\" ; lv2:name \"Side Chain\" ; "
               "pg:sideChainOf {} .\n",
               turtle::iri(groups.sideChain), kind, turtle::iri(groups.input)) +
           fmt::format(
               "{} a pg:OutputGroup , {} ; lv2:symbol \"main_out\" ; lv2:name \"Output\" ; pg:source {} .\n",
               turtle::iri(groups.output), kind, turtle::iri(groups.input));
}

std::string describeParameterGroups(const std::vector<HostParameter>& parameters) {
    std::string text;
    std::set<std::string> done;
    for (const HostParameter& parameter : parameters) {
        if (!done.insert(parameter.group).second) continue;
        text += fmt::format("{} a pg:InputGroup ; lv2:symbol {} ; lv2:name {} .\n",
                            turtle::iri(parameterGroupUri(parameter.group)),
                            turtle::literal(parameterGroupSymbol(parameter.group)),
                            turtle::literal(parameter.group));
    }
    return text;
}

/// The terms that port-groups lacks.
std::string describeOwnGroup(const Lv2Layout& layout) {
    if (!layout.isOwnGroup) return {};
    std::string roles;
    std::string elements;
    int index = 0;
    for (const Lv2Channel& channel : lv2Channels(layout.layout)) {
        const std::string role = turtle::iri(channel.designation);
        elements +=
            fmt::format("{}[ lv2:index {} ; lv2:designation {} ]", index > 0 ? " , " : "", index, role);
        ++index;
        if (!channel.isOwnDesignation) continue;
        roles += fmt::format(
            "{} a lv2:Channel ; rdfs:label {} ; rdfs:comment {} .\n", role, turtle::literal(channel.name),
            turtle::literal(
                fmt::format("The {} channel of a surround sound group with a pair above.", channel.name)));
    }
    return roles + fmt::format(
                       "{} a rdfs:Class ; rdfs:subClassOf pg:DiscreteGroup ; rdfs:label {} ;\n\t"
                       "rdfs:comment {} ;\n\tpg:element {} .\n",
                       turtle::iri(layout.groupUri()), turtle::literal(layout.name()),
                       turtle::literal(fmt::format("A {} discrete surround sound group.", layout.name())),
                       elements);
}

}  // namespace

std::string descriptionFile(const Lv2Layout& layout) {
    return std::string(layout.name()) + ".ttl";
}

std::string describePlugin(const Lv2Layout& layout, const GenericPlugin& model) {
    const Lv2PortGroups groups(layout);
    const std::vector<HostParameter> parameters = describeParameters(model);
    std::string text = turtle::prefixes() + head(layout, groups);
    const std::vector<Lv2Port> ports = lv2Ports(layout.layout, parameters);
    for (std::size_t i = 0; i < ports.size(); ++i) {
        std::optional<Lv2ControlDescription> control;
        if (ports[i].kind == Lv2PortKind::Parameter) {
            const AbstractPluginParameter& parameter = *model.parameterAt(static_cast<int>(ports[i].item));
            const Lv2Control port(parameter, parameters[ports[i].item]);
            control = Lv2ControlDescription{port, port.shown(parameter.value())};
        }
        text += (i > 0 ? " , " : "") + describePort(i, ports[i], control ? &*control : nullptr, groups);
    }
    return text + " .\n\n" + describeProduct() + describeGroups(layout, groups) +
           describeParameterGroups(parameters) + describeOwnGroup(layout);
}

std::string pluginManifest() {
    std::string text = turtle::prefixes();
    for (const Lv2Layout& layout : lv2Layouts()) {
        text += fmt::format("{} a lv2:Plugin ; lv2:binary <vanta.so> ; rdfs:seeAlso {} .\n",
                            turtle::iri(layout.uri()), turtle::iri(descriptionFile(layout)));
    }
    return text + interfaceManifest();
}

}  // namespace vanta
