#include "interface/frame/generic_dialog.hpp"

#include <algorithm>
#include <cmath>

#include "gui/controls/picture.hpp"
#include "gui/graphics/canvas.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"
#include "interface/controls/styles.hpp"

namespace vanta::interface {
namespace {

/// From the edge of the picture, its shadow included.
constexpr float kMargin = 40.0f;
constexpr float kHeadingTop = 36.0f;
constexpr float kLinesTop = 64.0f;
constexpr float kButtonBottom = 30.0f;
constexpr float kWidth = 400.0f;
constexpr gui::Color kVeil = gui::Color::of(0x80000000);

gui::Button::Style& makeButtonStyle(gui::UserInterface& ui) {
    auto& style = ui.make<gui::Button::Style>();
    style.textColor = kValueColor;
    style.textAlignment = gui::Alignment::Center;
    style.loadKind("DialogDefault");
    return style;
}

}  // namespace

GenericDialog::Style::Style(gui::UserInterface& interface)
    : Component(interface),
      background(gui::loadPicture(interface, "DialogGeneric.png")),
      button(makeButtonStyle(interface)) {}

GenericDialog::GenericDialog(gui::UserInterface& interface, Style& sharedStyle, const std::string& heading,
                             const std::string& lines, const std::string& buttonText)
    : Dialog(interface),
      style_(sharedStyle),
      heading_(interface.createText()),
      lines_(interface.createText()),
      button_(&interface.make<gui::Button>(nullptr, &sharedStyle.button)) {
    heading_->fontSize = 13.5f;
    heading_->fontName = std::string("Inter Medium");
    heading_->color = kValueColor;
    heading_->text = heading;
    lines_->fontSize = 8.25f;
    lines_->color = kValueColor;
    lines_->lineStyle = gui::Text::LineStyle::WordWrap;
    lines_->maxWidth = kWidth - 2.0f * kMargin;
    lines_->text = lines;
    button_->setCaption(buttonText);
    button_->accessibleName = buttonText;
    button_->onClick.setHandler(this, &GenericDialog::close);
    button_->parent = this;
    place();
    button_->takeFocus();
}

void GenericDialog::place() {
    const float height =
        std::max(kLinesTop + std::ceil(lines_->height()) + 16.0f + kButtonHeight + kButtonBottom,
                 style_.background->logicalRect().height());
    panel_ = gui::Rect::ofSize(std::round((localBounds().width() - kWidth) / 2.0f),
                               std::round((localBounds().height() - height) / 2.0f), kWidth, height);
    button_->bounds =
        gui::Rect::ofSize(panel_.right - kMargin - kButtonWidth,
                          panel_.bottom - kButtonBottom - kButtonHeight, kButtonWidth, kButtonHeight);
}

void GenericDialog::resized() {
    place();
    Dialog::resized();
}

bool GenericDialog::keyDown(const gui::KeyPress& key) {
    if (key.key != gui::Key::Escape && key.key != gui::Key::Return) return false;
    close(nullptr);
    return true;
}

/// The button is still on the stack.
void GenericDialog::close(void*) {
    ui().postDeferred(*this, 0);
}

void GenericDialog::deferredCall(int) {
    removeAllChildren();
    delete this;
}

void GenericDialog::paint(gui::Canvas& canvas) {
    canvas.fillRect(localBounds(), kVeil);
    canvas.drawStretched(*style_.background, panel_, style_.background->logicalRect());
    canvas.drawText(*heading_, {panel_.left + kMargin, panel_.top + kHeadingTop});
    canvas.drawText(*lines_, {panel_.left + kMargin, panel_.top + kLinesTop});
}

}  // namespace vanta::interface
