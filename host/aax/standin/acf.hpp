#pragma once

#include "aax_description.hpp"

// How a host finds a plug-in in a file: it looks up the seven functions below and calls ACFStartup first and
// ACFShutdown last, all on its main thread. Texts live as long as the file is loaded.

/// Of the interface as it stands here: both sides must be built with the same.
inline constexpr std::uint64_t ACF_SDK_VERSION = 1;

/// Goes with one of the components that the file registers.
class IACFClassFactory {
public:
    virtual ~IACFClassFactory() = default;
    virtual AAX_Result GetEffectDescriptions(AAX_ICollection* collection) = 0;
};

struct ACF_PluginDefinition {
    const char* manufacturer;
    const char* name;
    std::int32_t componentCount;
};
struct ACF_ComponentDefinition {
    const char* classId;
    const char* name;
};

extern "C" {
using ACF_StartupProc = AAX_Result (*)();
using ACF_ShutdownProc = AAX_Result (*)();
/// AAX_SUCCESS: nothing that the file has made is left.
using ACF_CanUnloadNowProc = AAX_Result (*)();
using ACF_GetSDKVersionProc = AAX_Result (*)(std::uint64_t* version);
using ACF_RegisterPluginProc = AAX_Result (*)(ACF_PluginDefinition* definition);
using ACF_RegisterComponentProc = AAX_Result (*)(std::int32_t index, ACF_ComponentDefinition* definition);
/// The file keeps the factory.
using ACF_GetClassFactoryProc = AAX_Result (*)(const char* classId, IACFClassFactory** factory);
}

/// A file exports the functions under their names, ACFStartup and so on.
#define ACF_EXPORT extern "C" [[gnu::visibility("default")]]
