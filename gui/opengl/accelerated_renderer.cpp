#include "gui/opengl/accelerated_renderer.hpp"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <string>

namespace vanta::gui {
namespace {

std::string upperCase(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return result;
}

bool isRecent(const std::string& version) {
    int major = 0;
    int minor = 0;
    if (std::sscanf(version.c_str(), "%d.%d", &major, &minor) != 2) return false;
    return major > 1 || (major == 1 && minor > 2);
}

bool isSoftware(const std::string& upperRenderer) {
    for (const char* name : {"LLVMPIPE", "SOFTPIPE", "SWRAST", "SOFTWARE RASTERIZER", "SWR ("}) {
        if (upperRenderer.find(name) != std::string::npos) return true;
    }
    return false;
}

}  // namespace

AcceleratedRenderer::AcceleratedRenderer(const GlFunctions& functions, const DeviceBacking& backing)
    : gl_(functions), backing_(backing) {}

std::string_view AcceleratedRenderer::text(GLenum name) const {
    const GLubyte* bytes = gl_.GetString(name);
    return bytes ? reinterpret_cast<const char*>(bytes) : std::string_view{};
}

bool AcceleratedRenderer::isFit(AccelerationMode mode) const {
    if (!isRecent(std::string(text(GL_VERSION)))) return false;
    if (!listContains(text(GL_EXTENSIONS), "GL_ARB_texture_non_power_of_two")) return false;
    if (mode.isForced()) return true;
    return upperCase(text(GL_VENDOR)).find("MATROX") == std::string::npos &&
           !isSoftware(upperCase(text(GL_RENDERER)));
}

/// A texture holds the inverse of its opacity, which is why its alpha enters as 1 - alpha everywhere.
void AcceleratedRenderer::setUpUnit(GLenum unit, GLint colorOperand, GLint colorSource) {
    gl_.ActiveTexture(unit);
    const auto set = [&](GLenum name, GLint value) { gl_.TexEnvi(GL_TEXTURE_ENV, name, value); };
    set(GL_TEXTURE_ENV_MODE, GL_COMBINE);
    set(GL_COMBINE_RGB, GL_MODULATE);
    set(GL_SOURCE0_RGB, GL_PREVIOUS);
    set(GL_OPERAND0_RGB, colorOperand);
    set(GL_SOURCE1_RGB, GL_TEXTURE);
    set(GL_OPERAND1_RGB, colorSource);
    set(GL_COMBINE_ALPHA, GL_MODULATE);
    set(GL_SOURCE0_ALPHA, GL_PREVIOUS);
    set(GL_OPERAND0_ALPHA, GL_SRC_ALPHA);
    set(GL_SOURCE1_ALPHA, GL_TEXTURE);
    set(GL_OPERAND1_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}

bool AcceleratedRenderer::initialize(AccelerationMode mode) {
    if (!isFit(mode)) return false;
    gl_.MatrixMode(GL_MODELVIEW);
    gl_.LoadIdentity();
    gl_.ShadeModel(GL_SMOOTH);
    gl_.Disable(GL_DEPTH_TEST);
    gl_.Disable(GL_DITHER);
    // The bitmap's colours times the opacity of what is drawn; then both times the opacity of a mask.
    setUpUnit(GL_TEXTURE1, GL_SRC_COLOR, GL_ONE_MINUS_SRC_ALPHA);
    setUpUnit(GL_TEXTURE0, GL_SRC_ALPHA, GL_SRC_COLOR);
    gl_.Enable(GL_BLEND);
    gl_.BlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    gl_.ClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    gl_.EnableClientState(GL_VERTEX_ARRAY);
    for (std::size_t unit = kUnits; unit-- > 0;) {
        gl_.ClientActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
        gl_.TexCoordPointer(2, GL_FLOAT, 0, texCoords_[unit].data());
    }
    colorValid_ = false;
    texturing_ = false;
    return true;
}

void AcceleratedRenderer::beginFrame(DevicePoint size) {
    const DeviceRect viewport{0, 0, size.x, size.y};
    if (viewport != viewport_) {
        viewport_ = viewport;
        gl_.MatrixMode(GL_PROJECTION);
        gl_.LoadIdentity();
        gl_.Ortho(0.0, size.x, size.y, 0.0, 0.0, 1.0);
        gl_.Viewport(0, 0, size.x, size.y);
    }
    const std::vector<GLuint> retired = textures_->takeRetired();
    if (!retired.empty()) gl_.DeleteTextures(static_cast<GLsizei>(retired.size()), retired.data());
    gl_.Clear(GL_COLOR_BUFFER_BIT);
    useQuad();
}

void AcceleratedRenderer::deleteTextures() {
    const std::vector<GLuint> all = textures_->takeAll();
    if (!all.empty()) gl_.DeleteTextures(static_cast<GLsizei>(all.size()), all.data());
}

void AcceleratedRenderer::bind(const Bitmap& bitmap, std::size_t unit) {
    const auto* accelerated = dynamic_cast<const AcceleratedBitmap*>(&bitmap);
    BitmapTexture& texture = accelerated ? accelerated->texture() : guests_[unit];
    if (!accelerated) texture.updates.markWhole();
    const bool isNew = texture.registry != textures_;
    if (isNew) {
        GLuint name = 0;
        gl_.GenTextures(1, &name);
        texture.adopt(textures_, name);
    }
    gl_.BindTexture(GL_TEXTURE_2D, texture.name);
    if (isNew) {
        gl_.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        gl_.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
        gl_.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        gl_.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    }
    upload(bitmap, texture);
}

void AcceleratedRenderer::upload(const Bitmap& bitmap, BitmapTexture& texture) {
    const DeviceRect& all = bitmap.pixelRect();
    if (texture.updates.state() == TextureUpdates::State::Current) return;
    if (texture.updates.state() == TextureUpdates::State::Whole) {
        gl_.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, all.right, all.bottom, 0, GL_BGRA, GL_UNSIGNED_BYTE,
                       bitmap.row(0));
    } else {
        gl_.PixelStorei(GL_UNPACK_ROW_LENGTH, all.right);
        for (const DeviceRect& changed : texture.updates.parts()) {
            const DeviceRect part = changed.intersected(all);
            if (part.isEmpty()) continue;
            gl_.TexSubImage2D(GL_TEXTURE_2D, 0, part.left, part.top, part.width(), part.height(), GL_BGRA,
                              GL_UNSIGNED_BYTE, bitmap.row(part.top) + part.left);
        }
        gl_.PixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    }
    texture.updates.uploaded();
}

}  // namespace vanta::gui
