#include "gui/x11/glx_functions.hpp"

#include <dlfcn.h>

#include <optional>

namespace vanta::gui {
namespace {

/// It stays for good: drivers leave handlers behind in every display.
void* library() {
    static void* const handle = dlopen("libGL.so.1", RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    return handle;
}

std::optional<GlxFunctions> findAll() {
    if (!library()) return std::nullopt;
    GlxFunctions found;
    bool complete = true;
#define VANTA_GLX_FIND(name)                                                            \
    found.name = reinterpret_cast<decltype(found.name)>(dlsym(library(), "glX" #name)); \
    complete = complete && found.name;
    VANTA_GLX_FUNCTIONS(VANTA_GLX_FIND)
#undef VANTA_GLX_FIND
    if (!complete) return std::nullopt;
    return found;
}

}  // namespace

const GlxFunctions* GlxFunctions::get() {
    static const std::optional<GlxFunctions> all = findAll();
    return all ? &*all : nullptr;
}

void* GlxFunctions::find(const char* name) const {
    // The library has what is in OpenGL; only of that is its own address sure to be the right one.
    if (void* own = dlsym(library(), name)) return own;
    return reinterpret_cast<void*>(GetProcAddressARB(reinterpret_cast<const GLubyte*>(name)));
}

}  // namespace vanta::gui
