#include "host/aax_host/scan_table.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/aax_host/stem_speakers.hpp"

namespace vanta {
namespace {

std::string stemText(AAX_EStemFormat stem) {
    const auto layout = layoutOfStemFormat(stem);
    return layout ? std::string(channelLayoutName(*layout)) : fmt::format("{:#x}", stem);
}

std::string metersOf(const AaxComponent& component) {
    std::vector<std::string> meters;
    for (const auto& [index, field] : component.fields) {
        for (const AAX_CTypeID id : field.meters) meters.push_back(fmt::format("`{}`", fourCharacters(id)));
    }
    return meters.empty() ? "none" : fmt::format("{}", fmt::join(meters, ", "));
}

std::string propertiesText(const AaxPropertyMap& properties) {
    std::vector<std::string> all;
    for (const auto& [number, value] : properties.all()) {
        const bool isId = number == AAX_eProperty_ManufacturerID || number == AAX_eProperty_ProductID;
        const auto bits = static_cast<AAX_CTypeID>(value);
        all.push_back(isId ? fmt::format("{} = `{}`", number, fourCharacters(bits))
                           : fmt::format("{} = {:#x}", number, bits));
    }
    return fmt::format("{}", fmt::join(all, ", "));
}

std::string effectText(const AaxCollection::Entry& entry) {
    const AaxEffect& effect = *entry.effect;
    std::string text =
        fmt::format("`{}`: {}, category {:#x}", entry.id, fmt::join(effect.names, " / "), effect.category);
    if (!effect.pageTable.empty()) text += fmt::format(", page table {}", effect.pageTable);
    if (effect.newEditor) text += ", editor";
    if (effect.newHostProcessor) text += ", offline processor";
    text += fmt::format("; properties {}", propertiesText(effect.properties));
    for (const AaxEffect::Meter& meter : effect.meters) {
        text += fmt::format("; meter `{}`, {}, properties {}", fourCharacters(meter.id), meter.name,
                            propertiesText(meter.properties));
    }
    return text + "\n";
}

std::string row(const std::string& effectId, const AaxComponent& component) {
    const bool hasSideChain = component.has(AaxComponent::Kind::SideChain);
    return fmt::format("| `{}` | {} | {} | {} | {:#x} | {} | {} | {} | `{}` |\n",
                       fourCharacters(component.pluginId()), component.isOffline() ? "offline" : "real time",
                       stemText(component.inputStem()), stemText(component.outputStem()),
                       component.outputStem(), stemSpeakers(component.outputStem()),
                       hasSideChain ? "yes" : "no", metersOf(component), effectId);
}

}  // namespace

std::string scanTable(const AaxModule& module) {
    const AaxCollection& described = module.description();
    std::string text = fmt::format("{}, by {}, version {}\n\n", fmt::join(described.packageNames, " / "),
                                   described.manufacturer, described.packageVersion);
    for (const AaxCollection::Entry& entry : described.effects) text += "- " + effectText(entry);
    text +=
        "\n| plug-in | runs | in | out | stem format | channels | side chain | meter | effect |\n"
        "| --- | --- | --- | --- | --- | --- | --- | --- | --- |\n";
    for (const AaxCollection::Entry& entry : described.effects) {
        for (const AaxComponent* component : entry.effect->components) text += row(entry.id, *component);
    }
    return text;
}

}  // namespace vanta
