#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace vanta {

class HostedPlugin;

/// Pixels.
struct ViewSize {
    int width = 0;
    int height = 0;
    bool operator==(const ViewSize&) const = default;
};

/// A window of the host's system: on X11, its id.
using NativeWindow = std::uintptr_t;

/// The window of an instance within a window of its host. All on the host's main thread.
class EmbeddedView {
public:
    /// Removes the window.
    virtual ~EmbeddedView() = default;
    /// The child window. It exists from the start, and may be shown by whoever knows it.
    virtual NativeWindow window() const = 0;
    virtual void setVisible(bool visible) = 0;
    virtual ViewSize size() const = 0;
    virtual bool isResizable() const = 0;
    /// The size nearest to `wanted` that it can take.
    virtual ViewSize nearestSize(ViewSize wanted) const = 0;
    /// By the host's wish.
    virtual void resize(ViewSize size) = 0;
    /// Pixels per point, 1 unless told.
    virtual void setScale(double scale) = 0;
    /// Draws and handles input. Called 30 times a second or more often.
    virtual void idle() = 0;
};

/// What a view asks of its host.
class EmbeddedViewHost {
public:
    virtual ~EmbeddedViewHost() = default;
    /// False: the host does not resize its window.
    virtual bool requestResize(ViewSize size) = 0;
};

/// Opens the view of an instance in a parent window. Empty where there is no interface: hosts then show
/// controls of their own.
using EmbeddedViewFactory =
    std::function<std::unique_ptr<EmbeddedView>(HostedPlugin&, NativeWindow parent, EmbeddedViewHost&)>;

}  // namespace vanta
