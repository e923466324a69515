#include <algorithm>

#include "gui/controls/modifier_map.hpp"
#include "gui/controls/value_control.hpp"

namespace vanta::gui {
namespace {

/// A control of fewer steps has values that users know one by one.
constexpr int kManySteps = 100;

int share(int steps, int parts) {
    return std::max((steps + parts / 2) / parts, 1);
}

}  // namespace

/// How far a key goes: arrows a hundredth of the range, or a step where steps are few; a tenth of that when
/// fine; Page keys a tenth of the range. 0 for other keys.
int ValueControl::keyStep(const KeyPress& key) const {
    const bool fine = ModifierMap::shared().behaviour(key.modifiers) & ModifierMap::kFine;
    const int page = share(steps(), 10);
    const int arrow = steps() < kManySteps ? 1 : share(steps(), fine ? 1000 : 100);
    switch (key.key) {
        case Key::Up:
        case Key::Right:
            return arrow;
        case Key::Down:
        case Key::Left:
            return -arrow;
        case Key::PageUp:
            return page;
        case Key::PageDown:
            return -page;
        case Key::Home:
            return minimum - value;
        case Key::End:
            return maximum - value;
        default:
            return 0;
    }
}

bool ValueControl::keyDown(const KeyPress& key) {
    // Shortcuts with Ctrl are the host's.
    if (key.modifiers & modifier::kCtrl) return false;
    if (key.key == Key::Return) {
        beginTyping();
        return true;
    }
    const bool isStep = key.key >= Key::Left && key.key <= Key::End;
    if (!isStep) return false;
    if (isChanging()) return true;  // the pointer has it
    setModifiers(key.modifiers);
    beginEndChange(GesturePhase::Begin, 0);
    beginEndChange(GesturePhase::Change, keyStep(key));
    beginEndChange(GesturePhase::End, 0);
    return true;
}

}  // namespace vanta::gui
