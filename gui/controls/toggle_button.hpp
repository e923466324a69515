#pragma once

#include <vector>

#include "gui/controls/button.hpp"

namespace vanta::gui {

/// A button that is on or off, as its value is. With a list of buttons it is their group: exactly one of them
/// is on, and the value is its index.
class ToggleButton : public Button {
public:
    explicit ToggleButton(UserInterface& interface, Animator* animatedBy = nullptr,
                          Style* sharedStyle = nullptr);

    ~ToggleButton() override;

    /// The value that "on" stands for.
    Property<int> onValue{this, 1};
    /// The value that "off" stands for.
    int offValue() const { return onValue > 1 ? 0 : 1 - onValue; }

    /// One that the group chooses among; the next index is its own. The button toggles from now on.
    void addButton(Button& button);

    bool keyDown(const KeyPress& key) override;
    void linkRemoved(Component* other) override;
    void propertyChanged(AbstractProperty& property) override;

protected:
    void toggled() override;
    void valueChanged(AbstractProperty& property) override;

private:
    void showValue();
    void choose(int index);
    void memberToggled(void* sender);

    std::vector<Button*> buttons_;  ///< null: gone
    bool showing_ = false;          ///< `on` follows the value
};

}  // namespace vanta::gui
