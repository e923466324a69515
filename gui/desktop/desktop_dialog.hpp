#pragma once

#include <string>

namespace vanta::gui {

/// A dialog that another program shows. It is open from its making, until the user has answered; deleting it
/// closes it. Nothing here waits: whoever asks goes on with its own loop, and polls some times a second. On
/// one thread.
class DesktopDialog {
public:
    enum class State {
        Open,
        Accepted,
        Cancelled,
        Unavailable,  ///< nobody has asked the user
    };

    DesktopDialog() = default;
    virtual ~DesktopDialog() = default;
    DesktopDialog(const DesktopDialog&) = delete;
    DesktopDialog& operator=(const DesktopDialog&) = delete;

    virtual State poll() = 0;
    /// The path that was chosen, in the file system's bytes. Empty until it is accepted, and for messages.
    virtual std::string chosenPath() const { return {}; }
};

}  // namespace vanta::gui
