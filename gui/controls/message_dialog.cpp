#include "gui/controls/message_dialog.hpp"

#include <algorithm>
#include <cmath>

#include "gui/controls/picture.hpp"
#include "gui/graphics/canvas.hpp"
#include "gui/graphics/text.hpp"
#include "gui/tree/region.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {
namespace {

constexpr Color kShade = Color::of(0x90000000);
constexpr Color kTitleColor = Color::of(0xFFF0E9E6);
constexpr Color kMessageColor = Color::of(0xFFC8C8C8);
constexpr Color kButtonColor = Color::of(0xFFF0E9E6);

// In logical units. The picture's shadow lies within its box.
constexpr float kPanelWidth = 400.0f;
constexpr float kLeastPanelWidth = 200.0f;
constexpr float kLeastPanelHeight = 140.0f;
constexpr float kSide = 34.0f;
constexpr float kTitleTop = 26.0f;
constexpr float kMessageTop = 52.0f;
constexpr float kMessageGap = 16.0f;
constexpr float kStripHeight = 67.0f;  ///< with the buttons, the shadow included
constexpr float kButtonTop = 8.0f;     ///< in the strip
constexpr float kButtonWidth = 104.0f;
constexpr float kButtonHeight = 30.0f;
constexpr float kButtonGap = 8.0f;
constexpr float kButtonSide = 24.0f;

}  // namespace

MessageDialog::MessageDialog(UserInterface& interface, const std::string& title, const std::string& message,
                             bool withCancel)
    : Dialog(interface),
      background_(loadPicture(interface, "DialogGeneric")),
      title_(interface.createText()),
      message_(interface.createText()) {
    title_->text = title;
    title_->fontName = "Inter Medium";
    title_->fontSize = 9.0f;
    title_->color = kTitleColor;
    message_->text = message;
    message_->fontSize = 8.25f;
    message_->color = kMessageColor;
    message_->lineStyle = Text::LineStyle::WordWrap;
    okStyle_ = std::make_unique<Button::Style>(interface);
    okStyle_->loadKind("DialogDefault");
    ok_ = &addButton(*okStyle_, "OK");
    ok_->onClick.setHandler(this, &MessageDialog::okHit);
    if (withCancel) {
        cancelStyle_ = std::make_unique<Button::Style>(interface);
        cancelStyle_->loadKind("Dialog");
        cancel_ = &addButton(*cancelStyle_, "Cancel");
        cancel_->onClick.setHandler(this, &MessageDialog::cancelHit);
    }
    accessibleName = title + ". " + message;
    place();
    ok_->takeFocus();
}

MessageDialog::~MessageDialog() {
    // Before the styles that they are drawn with.
    removeAllChildren();
}

Button& MessageDialog::addButton(Button::Style& style, const std::string& caption) {
    style.textColor = kButtonColor;
    style.textAlignment = Alignment::Center;
    auto& button = ui().make<Button>(nullptr, &style);
    button.setCaption(caption);
    button.accessibleName = caption;
    button.parent = this;
    return button;
}

/// The panel is as high as its text wants, within the window.
void MessageDialog::place() {
    if (!ok_) return;
    const Rect& room = localBounds();
    const float width = std::clamp(room.width(), kLeastPanelWidth, kPanelWidth);
    message_->maxWidth = width - 2.0f * kSide;
    const float wanted = std::ceil(kMessageTop + message_->height() + kMessageGap + kStripHeight);
    const float height = std::max(kLeastPanelHeight, std::min(wanted, room.height()));
    panel_ = Rect::ofSize(std::floor((room.width() - width) / 2.0f),
                          std::floor((room.height() - height) / 2.0f), width, height);
    const float top = panel_.bottom - kStripHeight + kButtonTop;
    float right = panel_.right - kButtonSide;
    for (Button* button : {cancel_, ok_}) {
        if (!button) continue;
        const float least = (width - 2.0f * kButtonSide - kButtonGap) / 2.0f;
        const float buttonWidth = std::min(kButtonWidth, least);
        button->bounds = Rect::ofSize(right - buttonWidth, top, buttonWidth, kButtonHeight);
        right -= buttonWidth + kButtonGap;
    }
    markDirty();
}

void MessageDialog::resized() {
    place();
    Dialog::resized();
}

void MessageDialog::refreshTree() {
    Dialog::refreshTree();
    place();
}

bool MessageDialog::keyDown(const KeyPress& key) {
    if (key.key == Key::Return) {
        give(Answer::Ok);
        return true;
    }
    if (key.key == Key::Escape) {
        give(cancel_ ? Answer::Cancel : Answer::Ok);
        return true;
    }
    return false;
}

void MessageDialog::give(Answer answer) {
    if (answer_ != Answer::None) return;
    answer_ = answer;
    onAnswer.raise(this);
}

void MessageDialog::paint(Canvas& canvas) {
    canvas.fillRect(localBounds(), kShade);
    canvas.drawStretched(*background_, panel_, background_->logicalRect());
    const Rect whole = canvas.clip;
    const Point corner{panel_.left + kSide, panel_.top};
    canvas.clip = commonPart(whole, {corner.x, panel_.top, panel_.right - kSide,
                                     panel_.bottom - kStripHeight - kMessageGap / 2.0f});
    canvas.drawText(*title_, {corner.x, corner.y + kTitleTop});
    canvas.drawText(*message_, {corner.x, corner.y + kMessageTop});
    canvas.clip = whole;
}

}  // namespace vanta::gui
