#include "host/aax_host/aax_module.hpp"

#include <dlfcn.h>
#include <fmt/format.h>

#include <algorithm>

#include "foundation/failure.hpp"
#include "host/aax_host/stem_speakers.hpp"

namespace vanta {

void AaxModule::Close::operator()(void* library) const {
    ::dlclose(library);
}

template <typename Proc>
Proc AaxModule::symbol(const char* name) const {
    void* const found = ::dlsym(library_.get(), name);
    if (!found)
        throw Failure(fmt::format("{}: is not an AAX module: it does not export {}", path_.string(), name));
    return reinterpret_cast<Proc>(found);
}

AaxModule::AaxModule(const std::filesystem::path& file) : path_(file) {
    open();
    try {
        scan();
    } catch (...) {
        symbol<ACF_ShutdownProc>("ACFShutdown")();
        throw;
    }
}

AaxModule::~AaxModule() {
    symbol<ACF_ShutdownProc>("ACFShutdown")();
}

void AaxModule::open() {
    std::error_code error;
    // A name without a folder would be looked for among the libraries of the system.
    const auto absolute = std::filesystem::absolute(path_, error);
    library_.reset(::dlopen(absolute.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (!library_) throw Failure(fmt::format("{}: cannot be loaded: {}", path_.string(), ::dlerror()));
    std::uint64_t version = 0;
    symbol<ACF_ShutdownProc>("ACFShutdown");
    symbol<ACF_CanUnloadNowProc>("ACFCanUnloadNow");
    const auto itsVersion = symbol<ACF_GetSDKVersionProc>("ACFGetSDKVersion");
    if (itsVersion(&version) != AAX_SUCCESS || version != ACF_SDK_VERSION) {
        throw Failure(fmt::format("{}: is built for version {} of the interface: this host needs version {}",
                                  path_.string(), version, ACF_SDK_VERSION));
    }
    if (symbol<ACF_StartupProc>("ACFStartup")() != AAX_SUCCESS)
        throw Failure(fmt::format("{}: does not start", path_.string()));
}

void AaxModule::scan() {
    ACF_PluginDefinition plugin{};
    ACF_ComponentDefinition component{};
    AAX_Result result = symbol<ACF_RegisterPluginProc>("ACFRegisterPlugin")(&plugin);
    if (result == AAX_SUCCESS)
        result = symbol<ACF_RegisterComponentProc>("ACFRegisterComponent")(0, &component);
    if (result == AAX_SUCCESS)
        result = symbol<ACF_GetClassFactoryProc>("ACFGetClassFactory")(component.classId, &factory_);
    if (result == AAX_SUCCESS) result = factory_->GetEffectDescriptions(&description_);
    if (result != AAX_SUCCESS)
        throw Failure(fmt::format("{}: does not describe itself: error {}", path_.string(), result));
}

std::vector<const AaxComponent*> AaxModule::components() const {
    std::vector<const AaxComponent*> all;
    for (const AaxCollection::Entry& entry : description_.effects)
        all.insert(all.end(), entry.effect->components.begin(), entry.effect->components.end());
    return all;
}

const AaxComponent* AaxModule::find(ChannelLayout layout, bool offline) const {
    const AAX_EStemFormat stem = stemFormatOf(layout);
    const auto all = components();
    const auto fits = [&](const AaxComponent* component) {
        return component->inputStem() == stem && component->outputStem() == stem &&
               component->isOffline() == offline;
    };
    const auto found = std::ranges::find_if(all, fits);
    return found == all.end() ? nullptr : *found;
}

bool AaxModule::canUnload() const {
    return symbol<ACF_CanUnloadNowProc>("ACFCanUnloadNow")() == AAX_SUCCESS;
}

}  // namespace vanta
