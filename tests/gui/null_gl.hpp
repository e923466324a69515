#pragma once

#include "gui/opengl/gl_functions.hpp"

namespace vanta::gui {

/// Does nothing, in place of any function.
template <typename Result, typename... Arguments>
auto doingNothing(Result (* /*like*/)(Arguments...)) {
    return +[](Arguments...) { return Result(); };
}

/// An OpenGL that draws nothing at all.
inline GlFunctions nullGl() {
    GlFunctions functions;
#define VANTA_GL_NOTHING(name) functions.name = doingNothing(functions.name);
    VANTA_GL_FUNCTIONS(VANTA_GL_NOTHING)
#undef VANTA_GL_NOTHING
    return functions;
}

}  // namespace vanta::gui
