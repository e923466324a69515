#pragma once

#include <memory>
#include <string>

#include "gui/controls/button.hpp"
#include "gui/controls/dialog.hpp"

namespace vanta::interface {

/// A panel with a heading, some lines and a button, over the whole interface. It goes when the button is
/// clicked, or by Return or Escape.
class GenericDialog : public gui::Dialog {
public:
    static constexpr float kButtonWidth = 124.0f;
    static constexpr float kButtonHeight = 29.0f;

    /// What dialogs share. Their interface owns it.
    class Style : public gui::Component {
    public:
        explicit Style(gui::UserInterface& interface);

        std::unique_ptr<gui::Bitmap> background;
        gui::Button::Style& button;
    };

    GenericDialog(gui::UserInterface& interface, Style& sharedStyle, const std::string& heading,
                  const std::string& lines, const std::string& buttonText);

    /// In the window, its shadow included.
    const gui::Rect& panel() const { return panel_; }
    gui::Button& button() const { return *button_; }

    void deferredCall(int argument) override;
    bool keyDown(const gui::KeyPress& key) override;
    void resized() override;
    void paint(gui::Canvas& canvas) override;

private:
    void place();
    void close(void*);

    Style& style_;
    std::unique_ptr<gui::Text> heading_;
    std::unique_ptr<gui::Text> lines_;
    gui::Button* button_;
    gui::Rect panel_;
};

}  // namespace vanta::interface
