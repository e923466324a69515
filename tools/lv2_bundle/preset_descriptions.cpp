#include "tools/lv2_bundle/preset_descriptions.hpp"

#include <fmt/format.h>

#include <cctype>
#include <filesystem>
#include <set>
#include <stdexcept>

#include "host/common/host_parameters.hpp"
#include "host/common/product_identity.hpp"
#include "host/lv2/lv2_control.hpp"
#include "host/lv2/lv2_layouts.hpp"
#include "host/lv2/lv2_ports.hpp"
#include "limiter/factory/factory_archive.hpp"
#include "limiter/model/vanta_preset.hpp"
#include "plugin/model/session_state.hpp"
#include "plugin/presets/setup_archive.hpp"
#include "tools/lv2_bundle/turtle.hpp"

namespace vanta {
namespace {

/// In lower case, with hyphens between words.
std::string slug(const std::string& text) {
    std::string words;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (std::isalnum(byte)) {
            words += static_cast<char>(std::tolower(byte));
        } else if (!words.empty() && words.back() != '-') {
            words += '-';
        }
    }
    return words;
}

std::string bankUri(const std::string& bank) {
    return fmt::format("{}:bank:{}", productIdentity().uri, slug(bank));
}

/// A session's state of the preset that does not speak of what is a taste in the interface: see
/// plugin/model/session_state.hpp for the places.
std::vector<std::byte> stateOf(VantaPlugin& model, const std::vector<HostParameter>& parameters) {
    constexpr std::size_t kFirst = 12;
    constexpr std::size_t kEach = 8;
    constexpr std::byte kNoType{0xff};
    std::vector<std::byte> state = writeSessionState(model);
    for (const HostParameter& parameter : parameters) {
        // A value of a type that nobody knows leaves its parameter as it is.
        if (parameter.isInterface)
            state.at(kFirst + kEach * static_cast<std::size_t>(parameter.index)) = kNoType;
    }
    return state;
}

std::string portValues(const VantaPlugin& model, const std::vector<HostParameter>& parameters) {
    std::string text;
    for (const Lv2Port& port : lv2Ports(model.channelLayout, parameters)) {
        if (port.kind != Lv2PortKind::Parameter || parameters[port.item].isInterface) continue;
        const AbstractPluginParameter& parameter = *model.parameterAt(static_cast<int>(port.item));
        const Lv2Control control(parameter, parameters[port.item]);
        text += fmt::format("{}[ lv2:symbol {} ; pset:value {} ]", text.empty() ? "" : " , ",
                            turtle::literal(port.symbol), turtle::number(control.shown(parameter.value())));
    }
    return text;
}

std::vector<ArchivedFile> presetFiles() {
    return readFolder(factoryArchive(), "FactoryPresets");
}

void load(VantaPlugin& model, const ArchivedFile& file) {
    if (!loadPreset(model, file.bytes, LockOutputRule::Ignore)) {
        throw std::runtime_error(fmt::format("{}: cannot be loaded as a preset", file.path));
    }
}

Lv2Preset describe(VantaPlugin& model, const ArchivedFile& file) {
    load(model, file);
    const std::filesystem::path path = file.path;
    const std::string folder = path.parent_path().string();
    Lv2Preset preset;
    preset.label = path.stem().string();
    preset.bank = folder.substr(folder.starts_with('_') ? 1 : 0);
    preset.uri =
        fmt::format("{}:preset:{}", productIdentity().uri,
                    preset.bank.empty() ? slug(preset.label) : slug(preset.bank) + ":" + slug(preset.label));
    model.presetState().set({.name = preset.label, .path = {}, .modified = false});
    const std::vector<HostParameter> parameters = describeParameters(model);
    preset.values = fmt::format(
        "state:state [ {} {}^^xsd:base64Binary ] ;\n\tlv2:port {}", turtle::iri(ownTerm("state")),
        turtle::literal(turtle::base64(stateOf(model, parameters))), portValues(model, parameters));
    return preset;
}

}  // namespace

std::vector<Lv2Preset> readFactoryPresets(VantaPlugin& model) {
    std::vector<Lv2Preset> presets;
    std::set<std::string> uris;
    for (const ArchivedFile& file : presetFiles()) {
        const Lv2Preset& preset = presets.emplace_back(describe(model, file));
        if (!uris.insert(preset.uri).second) {
            throw std::runtime_error(
                fmt::format("{}: another preset has this name but for signs", file.path));
        }
    }
    return presets;
}

void loadInitialPreset(VantaPlugin& model) {
    const std::string initial = model.defaultPresetName();
    for (const ArchivedFile& file : presetFiles()) {
        if (std::filesystem::path(file.path).stem() == initial) return load(model, file);
    }
    throw std::runtime_error(fmt::format("there is no preset '{}'", initial));
}

std::string presetManifest(const std::vector<Lv2Preset>& presets) {
    std::string plugins;
    for (const Lv2Layout& layout : lv2Layouts()) {
        plugins += (plugins.empty() ? "" : " , ") + turtle::iri(layout.uri());
    }
    std::string text = turtle::prefixes();
    for (const Lv2Preset& preset : presets) {
        text += fmt::format("{} a pset:Preset ; lv2:appliesTo {} ; rdfs:label {} ; rdfs:seeAlso <{}> .\n",
                            turtle::iri(preset.uri), plugins, turtle::literal(preset.label), kPresetFile);
    }
    return text;
}

std::string describePresets(const std::vector<Lv2Preset>& presets) {
    std::string text = turtle::prefixes();
    text += fmt::format(
        "{} a rdf:Property ; rdfs:label \"state\" ; rdfs:comment \"All that a session keeps.\" .\n",
        turtle::iri(ownTerm("state")));
    std::set<std::string> banks;
    for (const Lv2Preset& preset : presets) {
        if (!preset.bank.empty() && banks.insert(preset.bank).second) {
            text += fmt::format("{} a pset:Bank ; rdfs:label {} .\n", turtle::iri(bankUri(preset.bank)),
                                turtle::literal(preset.bank));
        }
        text += fmt::format(
            "{} {}{} .\n", turtle::iri(preset.uri),
            preset.bank.empty() ? "" : fmt::format("pset:bank {} ;\n\t", turtle::iri(bankUri(preset.bank))),
            preset.values);
    }
    return text;
}

}  // namespace vanta
