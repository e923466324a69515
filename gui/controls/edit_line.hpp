#pragma once

#include <cstddef>
#include <string>

namespace vanta::gui {

/// One line of text that is being edited, with a caret and a selection. Positions are bytes of the UTF-8, and
/// lie between characters.
class EditLine {
public:
    const std::string& text() const { return text_; }
    /// Control characters are left out. The caret goes to the end.
    void setText(const std::string& text);
    std::size_t caret() const { return caret_; }
    std::size_t selectionStart() const { return caret_ < anchor_ ? caret_ : anchor_; }
    std::size_t selectionEnd() const { return caret_ < anchor_ ? anchor_ : caret_; }
    std::string selected() const;

    void selectAll();
    void moveTo(std::size_t position, bool selecting);
    /// By a character; without selecting, a selection collapses towards the move.
    void moveBy(int step, bool selecting);
    /// In place of what is selected.
    void insert(const std::string& text);
    void insert(char32_t character);
    /// The selection, or the character before or behind the caret.
    void erase(int step);

    /// The start of the next character in the direction of `step` (1 or -1).
    std::size_t neighbour(std::size_t position, int step) const;

private:
    std::string text_;
    std::size_t caret_ = 0;
    std::size_t anchor_ = 0;  ///< where the selection began
};

}  // namespace vanta::gui
