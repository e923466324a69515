#pragma once

#include "gui/controls/button.hpp"

namespace vanta::interface {

/// Changes between the two compare slots, and shows which of them is in force.
class ABButton : public gui::Button {
public:
    /// As faint as can be read well.
    static constexpr int kOtherAlpha = 176;

    explicit ABButton(gui::UserInterface& interface, gui::Animator* animatedBy = nullptr,
                      Style* sharedStyle = nullptr);

    /// 0 for A, 1 for B.
    void showSlot(int slot);
};

}  // namespace vanta::interface
