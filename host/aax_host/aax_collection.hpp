#pragma once

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/aax/standin/aax.hpp"

namespace vanta {

/// "Vn2p"; what is no letter, digit or sign shows as a dot.
std::string fourCharacters(AAX_CTypeID id);

class AaxPropertyMap final : public AAX_IPropertyMap {
public:
    AAX_Result AddProperty(std::int32_t property, std::int32_t value) override;
    bool GetProperty(std::int32_t property, std::int32_t* value) const override;
    std::optional<std::uint32_t> find(std::int32_t property) const;
    const std::map<std::int32_t, std::int32_t>& all() const { return values_; }

private:
    std::map<std::int32_t, std::int32_t> values_;
};

class AaxEffect;

/// One way to run an effect, as it was described.
class AaxComponent final : public AAX_IComponentDescriptor {
public:
    enum class Kind {
        DataIn,
        AudioIn,
        AudioOut,
        BufferLength,
        SideChain,
        SampleRate,
        MidiIn,
        Transport,
        PrivateData,
        Meters
    };
    struct Field {
        Kind kind;
        std::uint32_t size = 0;             ///< bytes, of data
        std::string name{};                 ///< of a node
        std::uint32_t channels = 0;         ///< of a node, a bit for each
        std::vector<AAX_CTypeID> meters{};  ///< of the meters
    };

    explicit AaxComponent(const AaxEffect& owner) : effect(owner) {}

    AAX_Result AddDataInPort(AAX_CFieldIndex field, std::uint32_t size) override;
    AAX_Result AddAudioIn(AAX_CFieldIndex field) override;
    AAX_Result AddAudioOut(AAX_CFieldIndex field) override;
    AAX_Result AddAudioBufferLength(AAX_CFieldIndex field) override;
    AAX_Result AddSideChainIn(AAX_CFieldIndex field) override;
    AAX_Result AddSampleRate(AAX_CFieldIndex field) override;
    AAX_Result AddMIDINode(AAX_CFieldIndex field, AAX_EMIDINodeType type, const char* name,
                           std::uint32_t channelMask) override;
    AAX_Result AddPrivateData(AAX_CFieldIndex field, std::uint32_t size) override;
    AAX_Result AddMeters(AAX_CFieldIndex field, const AAX_CTypeID* ids, std::uint32_t count) override;
    AAX_IPropertyMap* NewPropertyMap() override { return &maps_.emplace_back(); }
    AAX_Result AddProcessProc(AAX_CProcessProc entry, const AAX_IPropertyMap* described) override;

    bool has(Kind kind) const;
    AAX_EStemFormat inputStem() const { return stem(AAX_eProperty_InputStemFormat); }
    AAX_EStemFormat outputStem() const { return stem(AAX_eProperty_OutputStemFormat); }
    bool isOffline() const { return properties.find(AAX_eProperty_PlugInID_AudioSuite).has_value(); }
    AAX_CTypeID pluginId() const;

    const AaxEffect& effect;
    std::map<AAX_CFieldIndex, Field> fields;
    AaxPropertyMap properties;
    AAX_CProcessProc proc = nullptr;

private:
    AAX_EStemFormat stem(std::int32_t property) const { return properties.find(property).value_or(0); }
    AAX_Result add(AAX_CFieldIndex index, Field field);

    std::deque<AaxPropertyMap> maps_;
};

class AaxEffect final : public AAX_IEffectDescriptor {
public:
    struct Meter {
        AAX_CTypeID id;
        std::string name;
        AaxPropertyMap properties;
    };

    AAX_Result AddName(const char* name) override;
    AAX_Result AddCategory(std::uint32_t described) override;
    AAX_Result AddPageTable(const char* name) override;
    AAX_Result AddEffectParameters(AAX_CNewEffectParameters make) override;
    AAX_Result AddEffectGUI(AAX_CNewEffectGUI make) override;
    AAX_Result AddHostProcessor(AAX_CNewHostProcessor make) override;
    AAX_Result SetProperties(const AAX_IPropertyMap* described) override;
    AAX_Result AddMeterDescription(AAX_CTypeID id, const char* name,
                                   const AAX_IPropertyMap* described) override;
    AAX_IPropertyMap* NewPropertyMap() override { return &maps_.emplace_back(); }
    AAX_IComponentDescriptor* NewComponentDescriptor() override { return &made_.emplace_back(*this); }
    AAX_Result AddComponent(const AAX_IComponentDescriptor* component) override;

    std::vector<std::string> names;
    std::uint32_t category = 0;
    std::string pageTable;
    AAX_CNewEffectParameters newParameters = nullptr;
    AAX_CNewEffectGUI newEditor = nullptr;
    AAX_CNewHostProcessor newHostProcessor = nullptr;
    AaxPropertyMap properties;
    std::vector<Meter> meters;
    std::vector<const AaxComponent*> components;

private:
    std::deque<AaxPropertyMap> maps_;
    std::deque<AaxComponent> made_;
};

/// What a module says of itself.
class AaxCollection final : public AAX_ICollection {
public:
    struct Entry {
        std::string id;
        const AaxEffect* effect;
    };

    AAX_IEffectDescriptor* NewDescriptor() override { return &made_.emplace_back(); }
    AAX_Result AddEffect(const char* id, const AAX_IEffectDescriptor* effect) override;
    AAX_Result SetManufacturerName(const char* name) override;
    AAX_Result AddPackageName(const char* name) override;
    AAX_Result SetPackageVersion(std::uint32_t version) override;

    std::vector<Entry> effects;
    std::string manufacturer;
    std::vector<std::string> packageNames;
    std::uint32_t packageVersion = 0;

private:
    std::deque<AaxEffect> made_;
};

}  // namespace vanta
