#pragma once

#include <memory>

#include "gui/controls/alignment.hpp"
#include "gui/controls/edit_line.hpp"
#include "gui/graphics/bitmap.hpp"
#include "gui/graphics/text.hpp"
#include "gui/tree/control.hpp"

namespace vanta::gui {

class Timer;

/// The box that is typed into. It takes all keys; those that end typing it tells.
class EditField : public Control {
public:
    explicit EditField(UserInterface& interface);
    ~EditField() override;

    EditLine& line() { return line_; }
    /// Font, size and colour of what is shown.
    Text& style() { return *style_; }
    Alignment alignment = Alignment::Left;

    NotifyEvent onReturn;
    NotifyEvent onEscape;
    NotifyEvent onTab;

    bool takesFocus() const override { return true; }
    bool takesText() const override { return true; }
    bool keyDown(const KeyPress& key) override;
    void focusChanged(bool hasFocus) override;
    void mouseDown(int button, Point point, int modifiers) override;
    void mouseMove(Point point, int modifiers) override;
    void mouseUp(int button, Point point, int modifiers) override;
    void doubleClick() override;
    void paint(Canvas& canvas) override;
    /// Whoever has done with it posts this.
    void deferredCall(int) override { delete this; }
    /// The caret is what shows that the keys go here.
    Rect focusBounds() override { return {}; }

private:
    /// Shows the caret, which blinks on while nothing is typed.
    void showCaret();
    void blink(void*);
    bool command(const KeyPress& key);
    bool edit(const KeyPress& key);
    /// From the left of the text to a position of it.
    float widthTo(std::size_t position);
    /// Where the text begins: as aligned, or so that the caret is in view.
    float textLeft();
    std::size_t positionAt(float x);

    EditLine line_;
    std::unique_ptr<Text> style_;
    std::unique_ptr<Text> prefix_;  ///< for measuring
    std::unique_ptr<Bitmap> frame_;
    bool selecting_ = false;
    std::unique_ptr<Timer> blinkTimer_;  ///< runs while the keys go here
    bool caretShown_ = true;
    int blinks_ = 0;  ///< since something was typed
};

}  // namespace vanta::gui
