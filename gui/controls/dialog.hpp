#pragma once

#include <memory>

#include "gui/tree/control.hpp"

namespace vanta::gui {

/// Covers the whole interface, of which nothing else can be used as long as it is there. A derived class
/// draws a panel with buttons; a press beside it does nothing. Whoever makes a dialog deletes it.
class Dialog : public Control {
public:
    explicit Dialog(UserInterface& interface);
    /// Gives the keyboard back to whoever had it.
    ~Dialog() override;

    /// True until it is deleted: by whoever has made it, or along with its interface.
    const std::shared_ptr<const bool>& liveness() const { return liveness_; }

    bool holdsFocus() const override { return true; }
    void linkRemoved(Component* other) override;

private:
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
    std::shared_ptr<const bool> liveness_ = alive_;
    Control* formerFocus_;
};

}  // namespace vanta::gui
