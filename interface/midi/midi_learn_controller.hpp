#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "gui/controls/button.hpp"
#include "gui/controls/overlay.hpp"

namespace vanta::interface {

/// The sheet that lies over an interface while controllers are learned. Controls that can be learned show
/// through and can be used as always; each has a label with its controller. What to do next stands above.
class MidiLearnController final : public gui::Overlay {
public:
    /// What the sheet asks its owner.
    struct Owner {
        std::function<int(int target)> controllerOf;  ///< -1 for none
        std::function<std::string(int target)> nameOf;
        std::function<void()> close;
        std::function<void(int target)> clear;  ///< takes the controller away
    };

    MidiLearnController(gui::UserInterface& interface, gui::Animator* animatedBy,
                        gui::Button::Style& closeStyle, gui::Button::Style& removeStyle, Owner asked);
    ~MidiLearnController() override;

    /// Before any control is chosen, and in front of the chosen one's name.
    Property<std::string> hintPrompt{this, std::string{}};
    Property<std::string> hintPrefix{this, std::string{}};
    /// Texts for a pointer, or for fingers.
    void setPrompts(bool pointerInput);

    /// A control that stands for a target.
    void addControl(gui::Control& control, int target);
    /// A control that can be used meanwhile and has no target.
    void addUsable(gui::Control& control);
    /// Chooses the control at a position of `addControl`; -1 for none.
    void select(int position);
    int selected() const { return selected_; }
    /// The target that is chosen, or -1.
    int selectedTarget() const;
    int positionOfTarget(int target) const;
    int assignedController() const { return assignedController_; }
    void clearSelected();
    /// Controllers may have changed.
    void refresh();
    std::string prompt() const;
    gui::Button& closeButton() const { return *close_; }
    gui::Button& removeButton() const { return *remove_; }

    int alphaAt(gui::Point point) override;
    void resized() override;
    void refreshTree() override;
    void linkRemoved(Component* other) override;
    void propertyChanged(AbstractProperty& property) override;
    void paint(gui::Canvas& canvas) override;

private:
    struct Learned {
        gui::Control* control;  ///< null: gone
        int target;             ///< -1: none, it can only be used
        int controller = -1;    ///< as of the last refresh, -1 for none
    };

    gui::Rect labelBounds(const Learned& learned) const;
    void paintFrame(gui::Canvas& canvas, const gui::Control& control, int opacity) const;
    void paintLabels(gui::Canvas& canvas);
    void placeParts();
    float promptLeft(float width) const;
    void entered(void* sender);
    void left(void* sender);
    void closeHit(void*) { owner_.close(); }
    void removeHit(void*) { clearSelected(); }

    Owner owner_;
    std::vector<Learned> learned_;
    int selected_ = -1;
    int assignedController_ = -1;
    gui::Control* marked_ = nullptr;  ///< under the pointer
    gui::Rect bubble_;
    std::unique_ptr<gui::Bitmap> bubblePicture_;
    std::unique_ptr<gui::Bitmap> label_;
    std::unique_ptr<gui::Bitmap> activeLabel_;
    std::unique_ptr<gui::Text> promptText_;
    std::unique_ptr<gui::Text> labelText_;
    gui::Button* close_;
    gui::Button* remove_;
};

}  // namespace vanta::interface
