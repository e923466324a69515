#pragma once

#include "gui/x11/x11_headers.hpp"

namespace vanta::gui {

#define VANTA_GLX_FUNCTIONS(X) \
    X(ChooseFBConfig)          \
    X(CreateNewContext)        \
    X(DestroyContext)          \
    X(GetFBConfigAttrib)       \
    X(GetProcAddressARB)       \
    X(MakeCurrent)             \
    X(QueryExtension)          \
    X(QueryExtensionsString)   \
    X(QueryVersion)            \
    X(SwapBuffers)

/// What joins OpenGL and X. It is found at run time, so that the program runs where there is none.
struct GlxFunctions {
#define VANTA_GLX_MEMBER(name) decltype(&::glX##name) name = nullptr;
    VANTA_GLX_FUNCTIONS(VANTA_GLX_MEMBER)
#undef VANTA_GLX_MEMBER

    /// Those of the system; null where something is missing.
    static const GlxFunctions* get();
    /// Any function of OpenGL or of an extension; null if there is none of this name.
    void* find(const char* name) const;
};

}  // namespace vanta::gui
