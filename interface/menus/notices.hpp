#pragma once

#include <deque>
#include <string>

#include "gui/tree/component.hpp"

namespace vanta::interface {

/// Messages that only want to be read. They come when whoever has something to say is off the stack, as the
/// interface may be closed while one is open.
class Notices final : public gui::Component {
public:
    using Component::Component;

    /// `flags` as in `UserInterface::showMessage`.
    void show(const std::string& text, int flags = 0);
    void deferredCall(int argument) override;

private:
    struct Notice {
        std::string text;
        int flags;
    };
    std::deque<Notice> waiting_;
};

}  // namespace vanta::interface
