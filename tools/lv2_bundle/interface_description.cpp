#include "tools/lv2_bundle/interface_description.hpp"

#include <fmt/format.h>

#include <string_view>

#include "host/lv2/lv2_interface_descriptors.hpp"
#include "host/lv2/lv2_layouts.hpp"
#include "tools/lv2_bundle/turtle.hpp"

namespace vanta {
namespace {

constexpr std::string_view kInterface = R"({uri}
	a ui:X11UI ;
	lv2:requiredFeature urid:map , ui:idleInterface ;
	lv2:optionalFeature ui:parent , ui:resize , ui:touch , ui:portMap , ui:portSubscribe , opts:options ,
		<http://lv2plug.in/ns/ext/instance-access> ;
	opts:supportedOption ui:scaleFactor , ui:windowTitle ;
	lv2:extensionData ui:idleInterface , ui:showInterface , ui:resize)";

constexpr std::string_view kNotification = R"( ;
	ui:portNotification [
		ui:plugin {} ;
		lv2:symbol "notify" ;
		ui:protocol atom:eventTransfer ;
		ui:notifyType {}
	])";

}  // namespace

std::string describeInterface() {
    std::string text =
        turtle::prefixes() + fmt::format(kInterface, fmt::arg("uri", turtle::iri(lv2InterfaceUri())));
    for (const Lv2Layout& layout : lv2Layouts()) {
        text += fmt::format(kNotification, turtle::iri(layout.uri()), turtle::iri(ownTerm("ToInterface")));
    }
    return text + " .\n\n" + describeMessages();
}

std::string interfaceManifest() {
    return fmt::format("{} a ui:X11UI ; ui:binary <vanta.so> ; rdfs:seeAlso {} .\n",
                       turtle::iri(lv2InterfaceUri()), turtle::iri(kInterfaceFile));
}

std::string describeMessages() {
    const auto of = [](std::string_view term) { return turtle::iri(ownTerm(term)); };
    return fmt::format("{} a rdfs:Class ; rdfs:subClassOf atom:Object ; rdfs:label {} ; rdfs:comment {} .\n",
                       of("ToPlugin"), turtle::literal("To Plugin"),
                       turtle::literal("A part of a message from an interface.")) +
           fmt::format("{} a rdfs:Class ; rdfs:subClassOf atom:Object ; rdfs:label {} ; rdfs:comment {} .\n",
                       of("ToInterface"), turtle::literal("To Interface"),
                       turtle::literal("A part of a message to an interface.")) +
           fmt::format("{} a rdf:Property ; rdfs:label {} ; rdfs:range atom:Chunk ; rdfs:comment {} .\n",
                       of("part"), turtle::literal("part"), turtle::literal("The bytes of a part."));
}

}  // namespace vanta
