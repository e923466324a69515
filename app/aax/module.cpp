#include <cstring>

#include "app/aax/aax_editor.hpp"
#include "host/aax/effect_descriptions.hpp"
#include "host/aax/standin/aax.hpp"
#include "host/common/product_identity.hpp"
#include "plugin/model/generic_plugin.hpp"

namespace {

class ClassFactory final : public IACFClassFactory {
public:
    AAX_Result GetEffectDescriptions(AAX_ICollection* collection) override {
        try {
            vanta::setEditorPlatform(vanta::aaxEditorPlatform());
        } catch (...) {
            return AAX_ERROR_NULL_OBJECT;
        }
        return vanta::describeEffects(collection);
    }
};

ClassFactory factory;

}  // namespace

// What a host finds in the module. All on its main thread.

ACF_EXPORT AAX_Result ACFStartup() {
    return AAX_SUCCESS;
}

ACF_EXPORT AAX_Result ACFShutdown() {
    return AAX_SUCCESS;
}

ACF_EXPORT AAX_Result ACFCanUnloadNow() {
    return vanta::GenericPlugin::instanceCount() == 0 ? AAX_SUCCESS : AAX_ERROR_INVALID_ARGUMENT;
}

ACF_EXPORT AAX_Result ACFGetSDKVersion(std::uint64_t* version) {
    if (!version) return AAX_ERROR_NULL_OBJECT;
    *version = ACF_SDK_VERSION;
    return AAX_SUCCESS;
}

ACF_EXPORT AAX_Result ACFRegisterPlugin(ACF_PluginDefinition* definition) {
    if (!definition) return AAX_ERROR_NULL_OBJECT;
    *definition = {vanta::productIdentity().vendor, vanta::productIdentity().name, 1};
    return AAX_SUCCESS;
}

ACF_EXPORT AAX_Result ACFRegisterComponent(std::int32_t index, ACF_ComponentDefinition* definition) {
    if (!definition) return AAX_ERROR_NULL_OBJECT;
    if (index != 0) return AAX_ERROR_INVALID_ARGUMENT;
    *definition = {vanta::productIdentity().id, vanta::productIdentity().name};
    return AAX_SUCCESS;
}

ACF_EXPORT AAX_Result ACFGetClassFactory(const char* classId, IACFClassFactory** made) {
    if (!classId || !made) return AAX_ERROR_NULL_OBJECT;
    if (std::strcmp(classId, vanta::productIdentity().id) != 0) return AAX_ERROR_INVALID_ARGUMENT;
    *made = &factory;
    return AAX_SUCCESS;
}
