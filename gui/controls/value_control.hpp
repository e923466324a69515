#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "gui/animation/animated_control.hpp"

namespace vanta::gui {

class ValueControl;
class ValueLinkGroup;

enum class GesturePhase { Begin, Change, End };

/// Who keeps what a value control stands for, such as a parameter.
class ValueControlListener {
public:
    virtual ~ValueControlListener() = default;
    /// How far the change can go in all that moves along, in steps; 0 where nothing can.
    virtual int requestChange(ValueControl& control, int delta) = 0;
    virtual void valueChanging(ValueControl& control, GesturePhase phase) = 0;
};

/// How a value is written and read by people.
class ValueText {
public:
    virtual ~ValueText() = default;
    virtual std::string textOf(const ValueControl& control) const = 0;
    /// Nothing if the text means no value.
    virtual std::optional<int> valueOf(const ValueControl& control, std::string_view text) const = 0;
};

/// A control that holds an integer within a range. Users change it by gestures with a beginning, changes and
/// an end, each told to the listener. What the program assigns meanwhile is too late: the gesture wins.
class ValueControl : public AnimatedControl {
public:
    /// Bits of `applyChange`.
    static constexpr int kFromValue = 1;  ///< the delta counts from `value`, not from where the pointer is
    static constexpr int kDryRun = 2;     ///< only the answer is wanted
    static constexpr int kFromGroup = 4;  ///< by a linked control

    explicit ValueControl(UserInterface& interface, Animator* animatedBy = nullptr);
    ~ValueControl() override;

    Property<int> defaultValue{nullptr, 0};
    /// Stands for several values that differ.
    Property<bool> indeterminate{this, false};
    /// The limits keep a distance of at least 1; the one that is not assigned gives way.
    Property<int> maximum{this, 4096};
    Property<int> minimum{this, 0};
    /// Clamped to the range.
    Property<int> value{this, 0};
    /// For whoever owns the control.
    Property<int> groupIndex{nullptr, -1};

    /// After each real change of `value`, by whomever.
    NotifyEvent onValueChanged;
    NotifyEvent onBeginChange;
    NotifyEvent onEndChange;
    /// The user wants to type a value; `valueText` and `commitText` are for whoever opens an editor.
    NotifyEvent onTyping;

    ValueControlListener* listener = nullptr;
    /// How values are written; null for plain integers.
    const ValueText* text = nullptr;
    /// From the position in the range (0 to 1) to the normalised value (0 to 1) and back; null for the same.
    float (*toNormal)(float) = nullptr;
    float (*fromNormal)(float) = nullptr;

    int steps() const { return maximum - minimum; }
    float normalized() const { return normalizedAt(value); }
    void setNormalized(float normalizedValue) { value = valueAt(normalizedValue); }
    float normalizedAt(int at) const;
    int valueAt(float normalizedValue) const;

    /// One step of a gesture, as `delta` steps from the last. Begin and End come from here as well.
    virtual void beginEndChange(GesturePhase phase, int delta);
    /// The step for this control alone; returns how far it goes, in steps.
    virtual int applyChange(GesturePhase phase, int source, int delta, int flags);
    /// Takes over what is held for the steps that follow.
    virtual void setModifiers(int modifiers);
    /// A whole gesture that jumps to `target`.
    void changeTo(int target);
    bool isChanging() const { return changing_; }
    /// Where the gesture is, which may be beyond the range.
    int virtualValue() const { return virtualValue_; }

    std::string valueText() const;
    /// A whole gesture to what `typed` means. False if it means nothing.
    bool commitText(std::string_view typed);

    bool takesFocus() const override { return true; }
    bool keyDown(const KeyPress& key) override;
    void doubleClick() override;
    void propertyChanged(AbstractProperty& property) override;

protected:
    /// The value or a limit has changed.
    virtual void valueChanged(AbstractProperty& property);
    virtual void beginTyping() { onTyping.raise(this); }
    /// A change within a gesture that does not travel: the listener is not asked how far it may go.
    void jumpTo(int target);
    /// The part of a gesture that a phase of the wheel is, `delta` steps for a move.
    void wheelGesture(WheelPhase phase, int delta);
    int clamped(std::int64_t unlimited) const;

private:
    friend class ValueLinkGroup;

    void updateLink(std::uint32_t sourceBit, int source, int& flags);
    int change(int source, int delta, int flags);
    void limitChanged(AbstractProperty& property);
    void valueAssigned(AbstractProperty& property);
    int keyStep(const KeyPress& key) const;

    int lastValue_ = 0;     ///< what the gesture has delivered last
    int virtualValue_ = 0;  ///< before clamping
    int shownValue_ = 0;    ///< of which `valueChanged` has told
    bool jumping_ = false;
    bool changing_ = false;
    bool linkActive_ = false;
    bool inValueChange_ = false;
    std::uint32_t buttonBits_ = 0;  ///< one for each source whose gesture moves the group
    std::shared_ptr<ValueLinkGroup> linkGroup_;
    int linkBase_ = 0;  ///< the value when the linked gesture began
};

}  // namespace vanta::gui
