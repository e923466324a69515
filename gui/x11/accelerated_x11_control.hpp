#pragma once

#include <memory>
#include <optional>
#include <string>

#include "gui/opengl/accelerated_renderer.hpp"
#include "gui/opengl/render_thread.hpp"
#include "gui/x11/glx_context.hpp"
#include "gui/x11/x11_control.hpp"

namespace vanta::gui {

/// OpenGL that draws on the windows of an interface.
struct AcceleratedDrawing {
    /// Null if there is none, it lacks something, or the mode does not want it.
    static std::unique_ptr<AcceleratedDrawing> create(X11Session& session, AccelerationMode mode);

    std::unique_ptr<GlxContext> context;
    std::unique_ptr<AcceleratedRenderer> renderer;
};

/// Paints by OpenGL on a thread of its own, all of the window in each frame that has something dirty. That
/// thread runs from the first frame on, which is painted in memory so that the window shows something at
/// once, and stands still while the window is replaced by another.
class AcceleratedX11Control final : public X11Control, private FrameTarget {
public:
    AcceleratedX11Control(X11Interface& interface, X11Session& session, Window parentWindow,
                          const std::string& title, std::unique_ptr<AcceleratedDrawing> drawing,
                          AccelerationMode mode);
    ~AcceleratedX11Control() override;

    void shutdownRendering() override;
    void enterFullScreen() override;
    void leaveFullScreen() override;
    /// Comes back when a frame of the new size is shown, so that no stale content flashes up.
    void resized() override;

protected:
    bool needsPainting() const override;
    void paintDirty() override;
    void deviceSizeChanged(DevicePoint) override {}

private:
    void showFirstFrame();
    void startThread();
    void stopThread(bool deletesTextures);
    void awaitFrame();

    bool makeCurrent() override;
    void release() override;
    bool drawFrame(bool canDraw) override;
    void frameDropped() override;
    void swap() override;
    std::optional<Vblank> vblank() override;
    void deleteTextures() override;

    std::unique_ptr<AcceleratedDrawing> drawing_;
    AccelerationMode mode_;
    int resizeDepth_ = 0;
    bool isShutDown_ = false;
    DevicePoint shownSize_;  ///< of the last frame that was shown; the thread's
    RenderThread thread_;
};

}  // namespace vanta::gui
