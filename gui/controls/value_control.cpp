#include "gui/controls/value_control.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>

#include "gui/controls/modifier_map.hpp"
#include "gui/controls/value_link_group.hpp"

namespace vanta::gui {
namespace {

/// The one source of gestures here: the pointer, or the keyboard.
constexpr int kPointer = 0;

}  // namespace

ValueControl::ValueControl(UserInterface& interface, Animator* animatedBy)
    : AnimatedControl(interface, animatedBy) {}

ValueControl::~ValueControl() {
    ValueLinkGroup::leave(*this);
}

int ValueControl::clamped(std::int64_t unlimited) const {
    return static_cast<int>(std::clamp<std::int64_t>(unlimited, minimum, maximum));
}

float ValueControl::normalizedAt(int at) const {
    const float position = static_cast<float>(at - minimum) / static_cast<float>(steps());
    return toNormal ? toNormal(position) : position;
}

int ValueControl::valueAt(float normalizedValue) const {
    const double position = fromNormal ? fromNormal(normalizedValue) : normalizedValue;
    const double range = steps();
    return minimum + static_cast<int>(std::clamp(std::trunc((0.5 / range + position) * range), 0.0, range));
}

void ValueControl::propertyChanged(AbstractProperty& property) {
    if (&property == &value) {
        valueAssigned(property);
    } else if (&property == &maximum || &property == &minimum) {
        limitChanged(property);
    } else if (&property == &indeterminate) {
        markDirty();
    } else {
        AnimatedControl::propertyChanged(property);
    }
}

void ValueControl::limitChanged(AbstractProperty& property) {
    if (minimum >= maximum) {
        if (&property == &maximum) {
            minimum = maximum - 1;
        } else {
            maximum = minimum + 1;
        }
        return;  // the other limit's change has told of both
    }
    lastValue_ = clamped(lastValue_);
    value = clamped(value);
    valueChanged(property);
}

void ValueControl::valueAssigned(AbstractProperty& property) {
    if (inValueChange_) return;
    inValueChange_ = true;
    // Within a gesture a late answer of the model must not pull the value from under the pointer.
    value = changing_ ? lastValue_ : clamped(value);
    inValueChange_ = false;
    if (value == shownValue_) return;
    shownValue_ = value;
    valueChanged(property);
}

void ValueControl::valueChanged(AbstractProperty& property) {
    markDirty();
    if (&property == &value) onValueChanged.raise(this);
}

void ValueControl::setModifiers(int modifiers) {
    linkActive_ = ModifierMap::shared().behaviour(modifiers) & ModifierMap::kLinked;
}

void ValueControl::beginEndChange(GesturePhase phase, int delta) {
    const std::uint32_t bit = 1u << kPointer;
    int flags = 0;
    if (phase == GesturePhase::Begin) {
        buttonBits_ &= ~bit;
        applyChange(phase, kPointer, delta, flags);
    }
    updateLink(bit, kPointer, flags);
    if (phase == GesturePhase::Change) change(kPointer, delta, flags);
    if (phase == GesturePhase::End) {
        if (linkGroup_ && (buttonBits_ & bit)) linkGroup_->send(*this, phase, kPointer, 0, 0);
        buttonBits_ &= ~bit;
        linkActive_ = false;
        applyChange(phase, kPointer, delta, flags);
    }
}

/// The modifier may come and go within a gesture.
void ValueControl::updateLink(std::uint32_t sourceBit, int source, int& flags) {
    const bool wanted = linkActive_ && linkGroup_;
    if (wanted == ((buttonBits_ & sourceBit) != 0)) return;
    if (wanted) {
        // From here on the pointer counts from the value: what it has run past the end would hold the group.
        linkBase_ = virtualValue_ = value;
        buttonBits_ |= sourceBit;
        linkGroup_->send(*this, GesturePhase::Begin, source, 0, 0);
    } else {
        buttonBits_ &= ~sourceBit;
        if (linkGroup_) linkGroup_->send(*this, GesturePhase::End, source, 0, 0);
        flags |= kFromValue;
    }
}

int ValueControl::change(int source, int delta, int flags) {
    const bool linked = (buttonBits_ & (1u << source)) && linkGroup_;
    if (!linked) return applyChange(GesturePhase::Change, source, delta, flags);
    if (!jumping_) {
        const int reach = applyChange(GesturePhase::Change, source, delta, flags | kDryRun);
        delta = std::clamp(delta, -reach, reach);
        delta = linkGroup_->limit(*this, source, delta);
    }
    const int target = clamped(static_cast<std::int64_t>(virtualValue_) + delta);
    const int distance = applyChange(GesturePhase::Change, source, delta, flags);
    linkGroup_->send(*this, GesturePhase::Change, source, delta, target);
    return distance;
}

int ValueControl::applyChange(GesturePhase phase, int /*source*/, int delta, int flags) {
    switch (phase) {
        case GesturePhase::Begin:
            changing_ = true;
            lastValue_ = virtualValue_ = linkBase_ = value;
            if (listener) listener->valueChanging(*this, phase);
            onBeginChange.raise(this);
            return 0;
        case GesturePhase::End:
            if (!changing_) return 0;
            changing_ = false;
            virtualValue_ = value;
            if (listener) listener->valueChanging(*this, phase);
            onEndChange.raise(this);
            return 0;
        case GesturePhase::Change:
            break;
    }
    const std::int64_t target =
        static_cast<std::int64_t>(flags & kFromValue ? value.value() : virtualValue_) + delta;
    const int limited = clamped(target);
    int distance = std::abs(limited - value);
    if (!jumping_ && delta != 0 && listener) {
        distance = std::max(distance, listener->requestChange(*this, delta));
    }
    if (flags & kDryRun) return distance;
    virtualValue_ = static_cast<int>(std::clamp<std::int64_t>(target, INT32_MIN, INT32_MAX));
    if (distance > 0 || (jumping_ && indeterminate)) {
        lastValue_ = limited;
        value = limited;
        if (listener) listener->valueChanging(*this, phase);
        requestUpdate();
    }
    return distance;
}

void ValueControl::jumpTo(int target) {
    jumping_ = true;
    beginEndChange(GesturePhase::Change, target - virtualValue_);
    jumping_ = false;
}

void ValueControl::wheelGesture(WheelPhase phase, int delta) {
    switch (phase) {
        case WheelPhase::Begin:
            if (!changing_) beginEndChange(GesturePhase::Begin, 0);
            break;
        case WheelPhase::Move:
            if (changing_) beginEndChange(GesturePhase::Change, delta);
            break;
        case WheelPhase::End:
            if (changing_) beginEndChange(GesturePhase::End, 0);
            break;
    }
}

void ValueControl::changeTo(int target) {
    if (changing_) return;
    beginEndChange(GesturePhase::Begin, 0);
    jumpTo(target);
    beginEndChange(GesturePhase::End, 0);
}

std::string ValueControl::valueText() const {
    return text ? text->textOf(*this) : std::to_string(value);
}

bool ValueControl::commitText(std::string_view typed) {
    std::optional<int> meant;
    if (text) {
        meant = text->valueOf(*this, typed);
    } else if (int number = 0; std::from_chars(typed.data(), typed.data() + typed.size(), number).ptr ==
                                   typed.data() + typed.size() &&
                               !typed.empty()) {
        meant = number;
    }
    if (!meant) return false;
    changeTo(clamped(*meant));
    return true;
}

void ValueControl::doubleClick() {
    AnimatedControl::doubleClick();
    beginTyping();
}

}  // namespace vanta::gui
