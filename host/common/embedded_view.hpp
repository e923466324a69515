#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

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

/// A key that a host has got and offers to the view.
struct ViewKey {
    enum class Key {
        Character,
        Tab,
        Return,
        Escape,
        Backspace,
        Delete,
        Left,
        Right,
        Up,
        Down,
        PageUp,
        PageDown,
        Home,
        End,
    };

    Key key = Key::Character;
    char32_t character = 0;  ///< for Key::Character: the Unicode code point
    bool shift = false;
    bool ctrl = false;
    bool alt = false;
    bool meta = false;
};

/// The window of an instance within a window of its host, or one of its own. All on the host's main thread.
/// The instance may go first: its window goes with it.
class EmbeddedView {
public:
    /// Removes the window.
    virtual ~EmbeddedView() = default;
    /// It exists from the start, and may be shown by whoever knows it. Another one after a change of layout,
    /// and 0 once the instance has gone or somebody else has destroyed it.
    virtual NativeWindow window() const = 0;
    virtual void setVisible(bool visible) = 0;
    virtual ViewSize size() const = 0;
    virtual bool isResizable() const = 0;
    /// The size nearest to `wanted` that it can take.
    virtual ViewSize nearestSize(ViewSize wanted) const = 0;
    /// By the host's wish.
    virtual void resize(ViewSize size) = 0;
    /// Pixels per point, as the host wants them; 0: as the desktop does.
    virtual void setScale(double scale) = 0;
    /// Draws and handles input. Called 30 times a second or more often, and when `fd` can be read. The view
    /// may be gone by the time it returns, as it calls the host.
    virtual void idle() = 0;
    /// A descriptor that can be read when `idle` has something to do; -1 where only time tells.
    virtual int fd() const { return -1; }
    /// The parameter whose control is at a point of the window, in pixels, or -1.
    virtual int parameterAt(int /*x*/, int /*y*/) const { return -1; }
    /// False: it is the host's.
    virtual bool keyPressed(const ViewKey& /*key*/) { return false; }

    // For a window of its own.

    virtual void setTitle(const std::string& /*title*/) {}
    /// It stays above that window of the host's.
    virtual void setTransientFor(NativeWindow /*window*/) {}
};

/// What a view asks of its host. It outlives the view.
class EmbeddedViewHost {
public:
    virtual ~EmbeddedViewHost() = default;
    /// True: the host resizes its window, now or later, and then the view. False: it does not.
    virtual bool requestResize(ViewSize size) = 0;
    /// Whether the host lets a view take any size.
    virtual bool canResize() const { return true; }
    /// The user has closed a window of its own, which is hidden by now; or, with `isGone`, it has been
    /// destroyed from outside. The last thing that `idle` does: the host may delete the view.
    virtual void viewClosed(bool /*isGone*/) {}
};

/// Opens views. Empty where there is no interface: hosts then show controls of their own.
class EmbeddedViewFactory {
public:
    /// The view of an instance in a parent window, or, for 0, in one of its own. Null if there is no display
    /// or no such parent.
    using Open =
        std::function<std::unique_ptr<EmbeddedView>(HostedPlugin&, NativeWindow parent, EmbeddedViewHost&)>;
    /// The pixels per point of a view to come where the host wants so many, or 0 if it says nothing.
    using Scale = std::function<double(double wanted)>;

    EmbeddedViewFactory() = default;
    /// Without `scale` views take what the host wants, else 1.
    template <typename Opens>
    requires std::is_convertible_v<Opens, Open> EmbeddedViewFactory(Opens open, Scale scale = {})
        : open_(std::move(open)), scale_(std::move(scale)) {}

    explicit operator bool() const { return static_cast<bool>(open_); }
    std::unique_ptr<EmbeddedView> operator()(HostedPlugin& plugin, NativeWindow parent,
                                             EmbeddedViewHost& host) const {
        return open_(plugin, parent, host);
    }
    double scale(double wanted) const {
        if (scale_) return scale_(wanted);
        return wanted > 0.0 ? wanted : 1.0;
    }

private:
    Open open_;
    Scale scale_;
};

}  // namespace vanta
