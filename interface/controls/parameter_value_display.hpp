#pragma once

#include <memory>
#include <string>
#include <vector>

#include "gui/controls/text_editor.hpp"
#include "gui/controls/value_control.hpp"
#include "gui/tree/timer.hpp"

namespace vanta::interface {

/// The name and the value of what the pointer is over, on a small panel near the control. A double click on
/// a value types it. One panel serves all controls of an interface.
class ParameterValueDisplay : public gui::AnimatedControl {
public:
    class Listener {
    public:
        virtual ~Listener() = default;
        /// It has come or gone, or shows another control.
        virtual void displayChanged() {}
        virtual void fixedChanged() {}
        virtual void valueEdited(gui::ValueControl&) {}
        virtual void positionChanged() {}
    };

    static constexpr int kShowMs = 400;
    static constexpr int kHideMs = 250;

    ParameterValueDisplay(gui::UserInterface& interface, gui::Animator* animatedBy);
    ~ParameterValueDisplay() override;

    /// From now on it comes where the pointer rests on the control or moves it, and where its value is typed.
    /// What it says of the control is the control's accessible name and its value as a text.
    void attach(gui::ValueControl& control);
    /// The control that it shows, or null. Others that move along stand below.
    gui::ValueControl* target() const { return rows_.empty() ? nullptr : rows_.front().control; }
    /// Shows also what moves along with the control.
    void showWith(gui::ValueControl& control);
    void show(gui::ValueControl& control);
    void hide();
    bool isShowing() const { return showing_; }
    /// It stays until it is let go.
    bool isPinned() const { return pinned_; }
    void setPinned(bool pinned);
    /// After a value or its text has changed.
    void refresh();
    void beginTyping(gui::ValueControl& control);
    std::string nameLine(int row) const;
    std::string valueLine(int row) const;
    /// Of the value, in the panel's coordinates.
    gui::Rect valueBounds(int row) const;
    gui::TextEditor* editor() const { return editor_.get(); }

    Listener* listener = nullptr;

    int alphaAt(gui::Point point) override;
    void mouseEnter() override;
    void mouseLeave() override;
    void doubleClick() override;
    void linkRemoved(Component* other) override;
    void paint(gui::Canvas& canvas) override;

private:
    struct Row {
        gui::ValueControl* control;
        std::unique_ptr<gui::Text> name;
        std::unique_ptr<gui::Text> value;
    };

    Row makeRow(gui::ValueControl& control) const;
    bool isHeld() const;
    void place();
    gui::Rect panel() const;
    void startTimer(int milliseconds);
    void elapsed(void*);
    void entered(void* sender);
    void left(void* sender);
    void taken(void* sender);
    void released(void* sender);
    void changed(void* sender);
    void typed(void* sender);
    void commit(void*);
    void typingOver(void*);
    void detach(gui::ValueControl& control);

    std::unique_ptr<gui::Bitmap> background_;
    std::unique_ptr<gui::Timer> timer_;
    std::unique_ptr<gui::TextEditor> editor_;  ///< made on first use
    std::vector<gui::ValueControl*> attached_;
    std::vector<Row> rows_;
    gui::ValueControl* hovered_ = nullptr;  ///< of those that it is attached to
    gui::ValueControl* typedInto_ = nullptr;
    bool showing_ = false;
    bool pinned_ = false;
    bool hasPointer_ = false;
};

}  // namespace vanta::interface
