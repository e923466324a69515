#include "host/clap/clap_module.hpp"

#include <clap/version.h>

#include <cstring>
#include <memory>
#include <utility>

#include "host/clap/clap_descriptor.hpp"
#include "host/clap/clap_plugin.hpp"

namespace vanta {

ClapModule::ClapModule(EmbeddedViewFactory views) : views_(std::move(views)) {
    factory_.get_plugin_count = [](const clap_plugin_factory_t*) { return std::uint32_t{1}; };
    factory_.get_plugin_descriptor = [](const clap_plugin_factory_t*, std::uint32_t index) {
        return index == 0 ? &clapDescriptor() : nullptr;
    };
    factory_.create_plugin = &ClapModule::create;
    factory_.module = this;
}

bool ClapModule::enter() {
    hosts_.fetch_add(1);
    return true;
}

void ClapModule::leave() {
    for (int hosts = hosts_.load(); hosts > 0 && !hosts_.compare_exchange_weak(hosts, hosts - 1);) {
    }
}

const void* ClapModule::factory(const char* id) const {
    if (hosts_.load() == 0 || !id || std::strcmp(id, CLAP_PLUGIN_FACTORY_ID) != 0) return nullptr;
    return static_cast<const clap_plugin_factory_t*>(&factory_);
}

const clap_plugin_t* ClapModule::create(const clap_plugin_factory_t* factory, const clap_host_t* host,
                                        const char* id) {
    if (!host || !clap_version_is_compatible(host->clap_version)) return nullptr;
    if (!id || std::strcmp(id, clapDescriptor().id) != 0) return nullptr;
    try {
        const ClapModule& module = *static_cast<const Factory*>(factory)->module;
        return (new ClapPlugin(*host, module.views_))->handle();
    } catch (...) {
        return nullptr;
    }
}

}  // namespace vanta
