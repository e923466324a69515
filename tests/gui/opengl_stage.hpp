#pragma once

#include "tests/gui/x11_server.hpp"

// After the server, whose headers define what must be taken back before ours.
#include <algorithm>
#include <memory>
#include <optional>
#include <stdexcept>
#include <vector>

#include "gui/offscreen/offscreen_interface.hpp"
#include "gui/opengl/accelerated_renderer.hpp"
#include "gui/text/x11_text.hpp"
#include "gui/x11/glx_context.hpp"
#include "gui/x11/x11_session.hpp"
#include "gui/x11/x11_window.hpp"

namespace vanta::gui {

inline constexpr AccelerationMode kForced{AccelerationMode::kForced | 1};

/// OpenGL on a window of its own.
class Stage {
public:
    explicit Stage(const DeviceBacking& backing)
        : session_(X11Server::get().name()),
          context_(
              GlxContext::create(X11Server::get().name(), XVisualIDFromVisual(session_.display.visual()))),
          window_(createWindow(session_.display, session_.display.root(), {0, 0, 1, 1}, true)) {
        if (!context_ || !context_->makeCurrent(window_)) throw std::runtime_error("no OpenGL");
        renderer_.emplace(*GlFunctions::find(context_->lookup()), backing);
        if (!renderer_->initialize(kForced)) throw std::runtime_error("OpenGL lacks something");
    }
    ~Stage() {
        context_->release();
        XDestroyWindow(session_.display.get(), window_);
    }

    AcceleratedRenderer& renderer() { return *renderer_; }
    template <typename Function>
    Function* find(const char* name) {
        return reinterpret_cast<Function*>(context_->lookup()(name));
    }

    /// The pixels of a frame, from the top.
    template <typename Draw>
    std::vector<Pixel> frame(int width, int height, Draw&& draw) {
        XResizeWindow(session_.display.get(), window_, static_cast<unsigned>(width),
                      static_cast<unsigned>(height));
        XSync(session_.display.get(), kXFalse);
        context_->makeCurrentAgain();
        renderer_->beginFrame({width, height});
        Canvas canvas(*renderer_);
        const float scale = renderer_->scale();
        canvas.setState(
            {{0.0f, 0.0f, static_cast<float>(width) / scale, static_cast<float>(height) / scale}, 255, {}});
        draw(canvas);
        std::vector<Pixel> rows(static_cast<std::size_t>(width * height)), pixels;
        find<decltype(glReadPixels)>("glReadPixels")(0, 0, width, height, GL_BGRA, GL_UNSIGNED_BYTE,
                                                     rows.data());
        for (int y = height - 1; y >= 0; --y) {
            pixels.insert(pixels.end(), rows.begin() + y * width, rows.begin() + (y + 1) * width);
        }
        return pixels;
    }

private:
    X11Session session_;
    std::unique_ptr<GlxContext> context_;
    Window window_;
    std::optional<AcceleratedRenderer> renderer_;
};

/// How far two pictures are apart.
struct Difference {
    Difference(const std::vector<Pixel>& a, const std::vector<Pixel>& b) {
        for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
            int largest = 0;
            for (int shift = 0; shift < 24; shift += 8) {
                const auto byte = [&](Pixel pixel) { return static_cast<int>(pixel >> shift & 255u); };
                largest = std::max(largest, std::abs(byte(a[i]) - byte(b[i])));
            }
            worst = std::max(worst, largest);
            notable += largest > 3;
        }
        if (a.size() != b.size()) worst = 255;
    }
    int worst = 0;
    int notable = 0;  ///< pixels that differ by more than rounding does
};

/// An interface without a window, with bitmaps that have textures.
class TexturedInterface final : public OffscreenInterface {
public:
    using OffscreenInterface::OffscreenInterface;
    ~TexturedInterface() override { shutDown(); }
    std::unique_ptr<Bitmap> createBitmap() override {
        return std::make_unique<AcceleratedBitmap>(deviceBacking());
    }
    std::unique_ptr<Text> createText() override {
        return std::make_unique<X11Text>(deviceBacking(), createBitmap());
    }
};

}  // namespace vanta::gui
