#pragma once

#include <functional>
#include <string>

#include "app/window/seek_line.hpp"
#include "app/window/transport.hpp"
#include "interface/controls/control_factory.hpp"

namespace vanta {

/// A slim bar under the interface that steers the file, and compares with what it was.
class TransportStrip final {
public:
    static constexpr float kHeight = 28.0f;

    /// In the footer of the factory's root, which has this height. The transport outlives it. `onCompare`:
    /// the user wants to hear the other of limited and bypassed.
    TransportStrip(interface::ControlFactory& factory, Transport& transport, std::function<void()> onCompare);
    ~TransportStrip();
    TransportStrip(const TransportStrip&) = delete;
    TransportStrip& operator=(const TransportStrip&) = delete;

    /// Shows where the file is.
    void refresh(bool isBypassed);

private:
    gui::Button& addButton(const gui::Rect& at, const char* name, const char* hint,
                           void (TransportStrip::*action)(void*));
    void layOut(void* = nullptr);
    void play(void*) { transport_.togglePause(); }
    void restart(void*) { transport_.restart(); }
    void loop(void*) { transport_.toggleLoop(); }
    void compare(void*) { onCompare_(); }

    interface::ControlFactory& factory_;
    Transport& transport_;
    std::function<void()> onCompare_;
    gui::RootControl& root_;
    gui::Image* ground_;
    gui::Button* play_;
    gui::Button* loop_;
    gui::Button* compare_;
    SeekLine* line_;
    gui::Label* time_;
    bool showsPause_ = false;
    std::string shownTime_;
};

}  // namespace vanta
