#include "host/editor/plugin_editor.hpp"
#include "host/vst3/factory.hpp"

namespace {

int entries = 0;
vanta::vst3::Factory* factory = nullptr;

}  // namespace

// What a host finds in the module. All on its main thread.

extern "C" {

[[gnu::visibility("default")]] bool ModuleEntry(void* /*library*/) {
    ++entries;
    return true;
}

/// Lets the factory go. A host that never gets here may have dropped by then what it gave us.
[[gnu::visibility("default")]] bool ModuleExit() {
    if (--entries > 0 || !factory) return true;
    factory->unref();
    factory = nullptr;
    return true;
}

/// The caller gives it back.
[[gnu::visibility("default")]] void* GetPluginFactory() {
    try {
        if (!factory) factory = new vanta::vst3::Factory(vanta::pluginEditors());
    } catch (...) {
        return nullptr;
    }
    factory->ref();
    return &factory->interface();
}

}  // extern "C"
