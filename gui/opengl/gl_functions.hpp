#pragma once

#include <GL/gl.h>

#include <functional>
#include <optional>
#include <string_view>

namespace vanta::gui {

/// Finds a function of OpenGL by its name; null where there is none.
using GlLookup = std::function<void*(const char*)>;

/// Whether a name is one of a list with spaces between, as extensions are told.
bool listContains(std::string_view list, std::string_view name);

#define VANTA_GL_FUNCTIONS(X) \
    X(ActiveTexture)          \
    X(BindTexture)            \
    X(BlendFunc)              \
    X(Clear)                  \
    X(ClearColor)             \
    X(ClientActiveTexture)    \
    X(Color4ub)               \
    X(ColorPointer)           \
    X(DeleteTextures)         \
    X(Disable)                \
    X(DisableClientState)     \
    X(DrawArrays)             \
    X(DrawElements)           \
    X(Enable)                 \
    X(EnableClientState)      \
    X(GenTextures)            \
    X(GetString)              \
    X(LoadIdentity)           \
    X(MatrixMode)             \
    X(Ortho)                  \
    X(PixelStorei)            \
    X(Scissor)                \
    X(ShadeModel)             \
    X(TexCoordPointer)        \
    X(TexEnvi)                \
    X(TexImage2D)             \
    X(TexParameteri)          \
    X(TexSubImage2D)          \
    X(VertexPointer)          \
    X(Viewport)

/// What the renderer calls of OpenGL 1.3. It is found at run time, so that the program runs where there is
/// none.
struct GlFunctions {
#define VANTA_GL_MEMBER(name) decltype(&::gl##name) name = nullptr;
    VANTA_GL_FUNCTIONS(VANTA_GL_MEMBER)
#undef VANTA_GL_MEMBER

    /// Nothing if one of them is missing.
    static std::optional<GlFunctions> find(const GlLookup& lookup);
};

}  // namespace vanta::gui
