#pragma once

#include <memory>
#include <string>

#include "gui/controls/button.hpp"
#include "gui/controls/dialog.hpp"

namespace vanta::gui {

/// Shows a message on a panel in the middle of the interface. Return answers OK; Escape answers Cancel, or OK
/// where there is nothing else.
class MessageDialog : public Dialog {
public:
    enum class Answer { None, Ok, Cancel };

    MessageDialog(UserInterface& interface, const std::string& title, const std::string& message,
                  bool withCancel);
    ~MessageDialog() override;

    /// None until the user has answered.
    Answer answer() const { return answer_; }
    NotifyEvent onAnswer;
    const Rect& panel() const { return panel_; }

    bool keyDown(const KeyPress& key) override;
    void resized() override;
    void refreshTree() override;
    void paint(Canvas& canvas) override;

private:
    Button& addButton(Button::Style& style, const std::string& caption);
    void place();
    void give(Answer answer);
    void okHit(void*) { give(Answer::Ok); }
    void cancelHit(void*) { give(Answer::Cancel); }

    std::unique_ptr<Bitmap> background_;
    std::unique_ptr<Text> title_;
    std::unique_ptr<Text> message_;
    std::unique_ptr<Button::Style> okStyle_;
    std::unique_ptr<Button::Style> cancelStyle_;
    Button* ok_ = nullptr;
    Button* cancel_ = nullptr;  ///< null where there is nothing to choose
    Rect panel_;                ///< its shadow included
    Answer answer_ = Answer::None;
};

}  // namespace vanta::gui
