#pragma once

#include <memory>

#include "foundation/interval_timer.hpp"
#include "gui/controls/label.hpp"
#include "gui/controls/text_editor.hpp"
#include "gui/tree/timer.hpp"
#include "interface/binding/parameter_gestures.hpp"

namespace vanta::interface {

/// The number of a continuous parameter, which can be dragged up and down, turned with the wheel, stepped
/// with the arrow keys and typed. It is not the control that the parameter is bound to.
class FloatValueLabel : public gui::MultiLabel {
public:
    FloatValueLabel(gui::UserInterface& interface, ParameterGestures& usedGestures,
                    const AbstractPluginParameter& shownParameter);
    ~FloatValueLabel() override;

    /// Decimals.
    Property<int> precision{this, 1};
    /// Of a key or a click of the wheel, in the shown number.
    Property<float> step{this, 0.1f};
    /// A number that is not negative has its sign.
    Property<bool> showPlus{this, false};
    /// Of the range, for two units of the pointer's way.
    Property<float> dragScale{this, 1.0f};

    /// After the parameter has changed.
    void refresh();
    std::string shownText() const;
    /// A click sets the number in motion; the next one within five seconds types it.
    bool isArmed() const { return armed_; }
    gui::TextEditor* editor() const { return editor_.get(); }

    int alphaAt(gui::Point) override { return 255; }
    void mouseDown(int button, gui::Point point, int modifiers) override;
    void mouseMove(gui::Point point, int modifiers) override;
    void mouseUp(int button, gui::Point point, int modifiers) override;
    void doubleClick() override;
    bool wheel(WheelPhase phase, gui::Point point, int modifiers, const WheelMove& move) override;
    bool takesFocus() const override { return true; }
    bool keyDown(const gui::KeyPress& key) override;
    void propertyChanged(AbstractProperty& property) override;

private:
    void hold();
    void letGo();
    void moveBy(float position);
    void stepBy(float count);
    void beginTyping();
    void commit(void*);
    void armedOver(void*);

    ParameterGestures& gestures_;
    const AbstractPluginParameter& parameter_;
    bool dragging_ = false;
    float pressY_ = 0.0f;
    bool armed_ = false;
    bool typesOnRelease_ = false;
    std::unique_ptr<IntervalTimer> pressClock_;
    std::unique_ptr<gui::Timer> armedTimer_;
    std::unique_ptr<gui::TextEditor> editor_;  ///< made on first use
};

}  // namespace vanta::interface
