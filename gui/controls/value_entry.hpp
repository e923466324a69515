#pragma once

#include <memory>
#include <vector>

#include "gui/controls/value_control.hpp"

namespace vanta::gui {

class TextEditor;

/// Opens a box over the value controls of an interface in which their values are typed. What means no value
/// is not taken over.
class ValueEntry : public Component {
public:
    explicit ValueEntry(UserInterface& interface);
    ~ValueEntry() override;

    /// From now on the control is typed into when its users ask for it.
    void attach(ValueControl& control);
    void linkRemoved(Component* other) override;

private:
    void begin(void* sender);
    void commit(void*);
    Rect boxOver(const ValueControl& control) const;

    std::vector<ValueControl*> attached_;
    std::unique_ptr<TextEditor> editor_;
    ValueControl* typed_ = nullptr;
};

}  // namespace vanta::gui
