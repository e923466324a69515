#include <clap/entry.h>

#include "host/clap/clap_module.hpp"
#include "host/editor/plugin_editor.hpp"

namespace {

vanta::ClapModule& module() {
    static vanta::ClapModule theModule(vanta::pluginEditors());
    return theModule;
}

}  // namespace

extern "C" CLAP_EXPORT const clap_plugin_entry_t clap_entry = {
    .clap_version = CLAP_VERSION_INIT,
    .init = [](const char*) { return module().enter(); },
    .deinit = [] { module().leave(); },
    .get_factory = [](const char* id) { return module().factory(id); },
};
