#pragma once

#include <memory>
#include <optional>
#include <string>

#include "gui/opengl/gl_functions.hpp"
#include "gui/opengl/render_thread.hpp"
#include "gui/x11/glx_functions.hpp"
#include "gui/x11/x11_connection.hpp"

namespace vanta::gui {

/// OpenGL on the windows of one visual, by a connection of its own: it may go from thread to thread, used by
/// one at a time. It outlives no window that it is current on.
class GlxContext {
public:
    /// Null if anything is missing.
    static std::unique_ptr<GlxContext> create(const std::string& displayName, VisualID visual);
    ~GlxContext();
    GlxContext(const GlxContext&) = delete;
    GlxContext& operator=(const GlxContext&) = delete;

    /// The functions of OpenGL, on this thread. The context must be current.
    GlLookup lookup() const;
    /// On a window that another connection may have made. Swaps do not wait for the display from then on.
    bool makeCurrent(Window window);
    /// On a window that nobody sees, to ask what OpenGL can do.
    bool makeCurrentUnseen();
    void release();
    /// The window may have another size, which some drivers notice only when they swap or begin anew.
    bool makeCurrentAgain();
    void swap();
    /// False once somebody has destroyed the window. To be asked before each frame: for a window that has
    /// gone Mesa's software driver takes a size of chance, and draws beyond the memory that it has.
    bool hasWindow() const;
    /// The server has gone.
    bool isBroken() const { return connection_->isBroken(); }
    /// By the extension GLX_OML_sync_control.
    std::optional<FrameTarget::Vblank> vblank();

private:
    GlxContext(const std::string& displayName, const GlxFunctions& functions);
    bool open(VisualID visual);
    void findExtensions();
    void makeUnseenWindow(VisualID visual);

    std::unique_ptr<X11Connection> connection_;
    const GlxFunctions& glx_;
    GLXContext context_ = nullptr;
    Window unseen_ = kNoXid;
    Colormap colormap_ = kNoXid;
    Window window_ = kNoXid;  ///< that it is current on
    double refreshMs_ = 0.0;  ///< as the window's display tells; 0 for unknown
    // Null where the extension is missing.
    PFNGLXSWAPINTERVALEXTPROC swapInterval_ = nullptr;
    PFNGLXSWAPINTERVALMESAPROC swapIntervalMesa_ = nullptr;
    PFNGLXGETSYNCVALUESOMLPROC syncValues_ = nullptr;
    PFNGLXGETMSCRATEOMLPROC refreshRate_ = nullptr;
};

}  // namespace vanta::gui
