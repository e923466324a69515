#include "host/aax_host/aax_collection.hpp"

#include <algorithm>
#include <utility>

namespace vanta {
namespace {

/// Takes over what another object of ours, handed back by the module, holds.
AAX_Result copy(const AAX_IPropertyMap* from, AaxPropertyMap& to) {
    const auto* const own = dynamic_cast<const AaxPropertyMap*>(from);
    if (!own) return AAX_ERROR_NULL_OBJECT;
    to = *own;
    return AAX_SUCCESS;
}

template <typename Text>
AAX_Result take(const char* text, Text store) {
    if (!text) return AAX_ERROR_NULL_OBJECT;
    store(text);
    return AAX_SUCCESS;
}

}  // namespace

std::string fourCharacters(AAX_CTypeID id) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const char character = static_cast<char>(id >> shift & 0xff);
        text += character > ' ' && character <= '~' ? character : '.';
    }
    return text;
}

// Properties

AAX_Result AaxPropertyMap::AddProperty(std::int32_t property, std::int32_t value) {
    values_[property] = value;
    return AAX_SUCCESS;
}

bool AaxPropertyMap::GetProperty(std::int32_t property, std::int32_t* value) const {
    const auto found = values_.find(property);
    if (found == values_.end()) return false;
    *value = found->second;
    return true;
}

std::optional<std::uint32_t> AaxPropertyMap::find(std::int32_t property) const {
    std::int32_t value = 0;
    return GetProperty(property, &value) ? std::optional(static_cast<std::uint32_t>(value)) : std::nullopt;
}

// Components

AAX_Result AaxComponent::add(AAX_CFieldIndex index, Field field) {
    // A context has room for a few dozen.
    constexpr AAX_CFieldIndex kFields = 64;
    if (index < 0 || index >= kFields || fields.contains(index)) return AAX_ERROR_INVALID_ARGUMENT;
    fields.emplace(index, std::move(field));
    return AAX_SUCCESS;
}

AAX_Result AaxComponent::AddDataInPort(AAX_CFieldIndex field, std::uint32_t size) {
    if (size > AAX_CPacketDispatcher::kLargestPacket) return AAX_ERROR_INVALID_ARGUMENT;
    return add(field, {.kind = Kind::DataIn, .size = size});
}

AAX_Result AaxComponent::AddAudioIn(AAX_CFieldIndex field) {
    return add(field, {.kind = Kind::AudioIn});
}

AAX_Result AaxComponent::AddAudioOut(AAX_CFieldIndex field) {
    return add(field, {.kind = Kind::AudioOut});
}

AAX_Result AaxComponent::AddAudioBufferLength(AAX_CFieldIndex field) {
    return add(field, {.kind = Kind::BufferLength});
}

AAX_Result AaxComponent::AddSideChainIn(AAX_CFieldIndex field) {
    return add(field, {.kind = Kind::SideChain});
}

AAX_Result AaxComponent::AddSampleRate(AAX_CFieldIndex field) {
    return add(field, {.kind = Kind::SampleRate});
}

AAX_Result AaxComponent::AddMIDINode(AAX_CFieldIndex field, AAX_EMIDINodeType type, const char* name,
                                     std::uint32_t channelMask) {
    if (!name) return AAX_ERROR_NULL_OBJECT;
    const Kind kind = type == AAX_EMIDINodeType::Transport ? Kind::Transport : Kind::MidiIn;
    return add(field, {.kind = kind, .name = name, .channels = channelMask});
}

AAX_Result AaxComponent::AddPrivateData(AAX_CFieldIndex field, std::uint32_t size) {
    return add(field, {.kind = Kind::PrivateData, .size = size});
}

AAX_Result AaxComponent::AddMeters(AAX_CFieldIndex field, const AAX_CTypeID* ids, std::uint32_t count) {
    if (!ids) return AAX_ERROR_NULL_OBJECT;
    return add(field, {.kind = Kind::Meters, .meters = {ids, ids + count}});
}

AAX_Result AaxComponent::AddProcessProc(AAX_CProcessProc entry, const AAX_IPropertyMap* described) {
    if (!entry) return AAX_ERROR_NULL_OBJECT;
    proc = entry;
    return copy(described, properties);
}

bool AaxComponent::has(Kind kind) const {
    return std::ranges::any_of(fields, [kind](const auto& field) { return field.second.kind == kind; });
}

AAX_CTypeID AaxComponent::pluginId() const {
    const auto native = properties.find(AAX_eProperty_PlugInID_Native);
    return native.value_or(properties.find(AAX_eProperty_PlugInID_AudioSuite).value_or(0));
}

// Effects

AAX_Result AaxEffect::AddName(const char* name) {
    return take(name, [this](const char* text) { names.emplace_back(text); });
}

AAX_Result AaxEffect::AddCategory(std::uint32_t described) {
    category |= described;
    return AAX_SUCCESS;
}

AAX_Result AaxEffect::AddPageTable(const char* name) {
    return take(name, [this](const char* text) { pageTable = text; });
}

AAX_Result AaxEffect::AddEffectParameters(AAX_CNewEffectParameters make) {
    newParameters = make;
    return make ? AAX_SUCCESS : AAX_ERROR_NULL_OBJECT;
}

AAX_Result AaxEffect::AddEffectGUI(AAX_CNewEffectGUI make) {
    newEditor = make;
    return make ? AAX_SUCCESS : AAX_ERROR_NULL_OBJECT;
}

AAX_Result AaxEffect::AddHostProcessor(AAX_CNewHostProcessor make) {
    newHostProcessor = make;
    return make ? AAX_SUCCESS : AAX_ERROR_NULL_OBJECT;
}

AAX_Result AaxEffect::SetProperties(const AAX_IPropertyMap* described) {
    return copy(described, properties);
}

AAX_Result AaxEffect::AddMeterDescription(AAX_CTypeID id, const char* name,
                                          const AAX_IPropertyMap* described) {
    if (!name) return AAX_ERROR_NULL_OBJECT;
    Meter& meter = meters.emplace_back(Meter{id, name, {}});
    return copy(described, meter.properties);
}

AAX_Result AaxEffect::AddComponent(const AAX_IComponentDescriptor* component) {
    const auto found =
        std::ranges::find_if(made_, [component](const AaxComponent& own) { return &own == component; });
    if (found == made_.end()) return AAX_ERROR_NULL_OBJECT;
    if (!found->proc) return AAX_ERROR_INVALID_ARGUMENT;
    components.push_back(&*found);
    return AAX_SUCCESS;
}

// The module

AAX_Result AaxCollection::AddEffect(const char* id, const AAX_IEffectDescriptor* effect) {
    const auto found = std::ranges::find_if(made_, [effect](const AaxEffect& own) { return &own == effect; });
    if (!id || found == made_.end()) return AAX_ERROR_NULL_OBJECT;
    effects.push_back({id, &*found});
    return AAX_SUCCESS;
}

AAX_Result AaxCollection::SetManufacturerName(const char* name) {
    return take(name, [this](const char* text) { manufacturer = text; });
}

AAX_Result AaxCollection::AddPackageName(const char* name) {
    return take(name, [this](const char* text) { packageNames.emplace_back(text); });
}

AAX_Result AaxCollection::SetPackageVersion(std::uint32_t version) {
    packageVersion = version;
    return AAX_SUCCESS;
}

}  // namespace vanta
