#pragma once

#include <string>
#include <utility>
#include <vector>

#include "gui/controls/image.hpp"
#include "gui/controls/label.hpp"
#include "gui/controls/select_button.hpp"
#include "gui/controls/toggle_button.hpp"
#include "gui/tree/user_interface.hpp"
#include "interface/controls/styles.hpp"

namespace vanta::interface {

/// Makes the controls of an interface in its looks, and knows them in the order in which they were made.
class ControlFactory final : public gui::Component {
public:
    /// The animator may be null: then nothing fades.
    ControlFactory(gui::UserInterface& interface, gui::Animator* animatedBy, const Styles& sharedStyles);
    ~ControlFactory() override { deleteFrom(0); }

    /// Where new controls go: the root unless told.
    gui::Control* parent;
    const std::vector<gui::Control*>& controls() const { return controls_; }
    const Styles& styles() const { return styles_; }
    gui::Animator* animator() const { return animator_; }

    /// Any control at a place in the parent. `arguments` are those of its constructor behind the interface.
    template <typename Kind, typename... Arguments>
    Kind& add(const gui::Rect& at, Arguments&&... arguments) {
        Kind& made = ui().make<Kind>(std::forward<Arguments>(arguments)...);
        made.bounds = at;
        adopt(made);
        return made;
    }
    /// A knob has the size of its picture.
    gui::Knob& addKnob(gui::Point at, KnobStyle style);
    template <typename Kind = gui::Button>
    Kind& addButton(const gui::Rect& at, ButtonStyle style, const std::string& caption = {}) {
        Kind& made = add<Kind>(at, animator_, &styles_.button(style));
        if (!caption.empty()) made.setCaption(caption);
        made.accessibleName = caption;
        return made;
    }
    /// A value in a well, with a caret.
    gui::SelectButton& addSelectButton(const gui::Rect& at, ButtonStyle style = ButtonStyle::Dark);
    /// A toggle that is shown by two pictures and perhaps an icon on both.
    gui::ToggleButton& addPictureToggle(const gui::Rect& at, const std::string& offImage,
                                        const std::string& onImage, const std::string& icon = {});
    /// In its own size.
    gui::Image& addImage(gui::Point at, const std::string& imageName);
    gui::Label& addLabel(const gui::Rect& at, const std::string& text,
                         gui::Alignment alignment = gui::Alignment::Left);

    /// Deletes all controls but the first `count`, the last ones first, and with them their children.
    void deleteFrom(std::size_t count);
    void linkRemoved(Component* other) override;

private:
    void adopt(gui::Control& control);

    gui::Animator* animator_;
    const Styles& styles_;
    std::vector<gui::Control*> controls_;
};

}  // namespace vanta::interface
