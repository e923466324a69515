#pragma once

#include "aax_plugin_interfaces.hpp"

// What a plug-in says of itself while a host scans it. The host makes all descriptors and property maps, and
// keeps them until the scan is over.

class AAX_IPropertyMap {
public:
    virtual ~AAX_IPropertyMap() = default;
    virtual AAX_Result AddProperty(std::int32_t property, std::int32_t value) = 0;
    virtual bool GetProperty(std::int32_t property, std::int32_t* value) const = 0;
};

/// One way to run an effect: the fields of its render context and the entry that renders.
class AAX_IComponentDescriptor {
public:
    virtual ~AAX_IComponentDescriptor() = default;
    virtual AAX_Result AddDataInPort(AAX_CFieldIndex field, std::uint32_t size) = 0;
    virtual AAX_Result AddAudioIn(AAX_CFieldIndex field) = 0;
    virtual AAX_Result AddAudioOut(AAX_CFieldIndex field) = 0;
    virtual AAX_Result AddAudioBufferLength(AAX_CFieldIndex field) = 0;
    virtual AAX_Result AddSideChainIn(AAX_CFieldIndex field) = 0;
    virtual AAX_Result AddSampleRate(AAX_CFieldIndex field) = 0;
    virtual AAX_Result AddMIDINode(AAX_CFieldIndex field, AAX_EMIDINodeType type, const char* name,
                                   std::uint32_t channelMask) = 0;
    virtual AAX_Result AddPrivateData(AAX_CFieldIndex field, std::uint32_t size) = 0;
    virtual AAX_Result AddMeters(AAX_CFieldIndex field, const AAX_CTypeID* ids, std::uint32_t count) = 0;
    virtual AAX_IPropertyMap* NewPropertyMap() = 0;
    virtual AAX_Result AddProcessProc(AAX_CProcessProc proc, const AAX_IPropertyMap* properties) = 0;
};

using AAX_CNewEffectParameters = AAX_IEffectParameters* (*)();
using AAX_CNewEffectGUI = AAX_IEffectGUI* (*)();
using AAX_CNewHostProcessor = AAX_IHostProcessor* (*)();

class AAX_IEffectDescriptor {
public:
    virtual ~AAX_IEffectDescriptor() = default;
    /// From the longest to the shortest: a host takes the one that fits.
    virtual AAX_Result AddName(const char* name) = 0;
    virtual AAX_Result AddCategory(std::uint32_t category) = 0;
    virtual AAX_Result AddPageTable(const char* name) = 0;
    virtual AAX_Result AddEffectParameters(AAX_CNewEffectParameters make) = 0;
    virtual AAX_Result AddEffectGUI(AAX_CNewEffectGUI make) = 0;
    virtual AAX_Result AddHostProcessor(AAX_CNewHostProcessor make) = 0;
    virtual AAX_Result SetProperties(const AAX_IPropertyMap* properties) = 0;
    virtual AAX_Result AddMeterDescription(AAX_CTypeID id, const char* name,
                                           const AAX_IPropertyMap* properties) = 0;
    virtual AAX_IPropertyMap* NewPropertyMap() = 0;
    virtual AAX_IComponentDescriptor* NewComponentDescriptor() = 0;
    virtual AAX_Result AddComponent(const AAX_IComponentDescriptor* component) = 0;
};

class AAX_ICollection {
public:
    virtual ~AAX_ICollection() = default;
    virtual AAX_IEffectDescriptor* NewDescriptor() = 0;
    /// Several descriptors under one id are one effect with the components of all.
    virtual AAX_Result AddEffect(const char* id, const AAX_IEffectDescriptor* effect) = 0;
    virtual AAX_Result SetManufacturerName(const char* name) = 0;
    virtual AAX_Result AddPackageName(const char* name) = 0;
    virtual AAX_Result SetPackageVersion(std::uint32_t version) = 0;
};
