#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "gui/controls/alignment.hpp"
#include "gui/controls/picture.hpp"
#include "gui/graphics/canvas.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"
#include "interface/controls/styles.hpp"
#include "interface/midi/midi_learn_controller.hpp"

namespace vanta::interface {
namespace {

/// On the top bar, where the fewest controls are that can be learned.
constexpr float kBubbleTop = 6.0f;
constexpr float kBubbleHeight = 28.0f;
/// Of the bubble's text from its sides, shadow included.
constexpr float kBubbleMargin = 14.0f;
constexpr float kBubbleGap = 4.0f;
constexpr float kCloseWidth = 48.0f;
constexpr float kCloseHeight = 20.0f;
constexpr float kRemoveSize = 12.0f;
constexpr float kRemoveGap = 2.0f;
constexpr float kFrameDistance = 2.0f;
constexpr float kFrameWidth = 1.0f;
constexpr int kMarkAlpha = 110;

}  // namespace

void MidiLearnController::refreshTree() {
    bubblePicture_ = gui::loadPicture(ui(), "MidiLearnLabelBackground.png");
    label_ = gui::loadPicture(ui(), "MidiLearnLabel.png");
    activeLabel_ = gui::loadPicture(ui(), "MidiLearnLabelActive.png");
    Overlay::refreshTree();
}

/// In this control's coordinates, over the middle of what it labels; with the cross that removes it where
/// there is one.
gui::Rect MidiLearnController::labelBounds(const Learned& learned) const {
    const gui::Control& control = *learned.control;
    const bool hasCross = selected_ >= 0 && &learned == &learned_[static_cast<std::size_t>(selected_)];
    const gui::Rect at = control.windowBounds().translated(gui::Point{} - toWindow(gui::Point{}));
    const gui::Rect& size = label_->logicalRect();
    const float width = size.width() + (hasCross ? kRemoveSize + kRemoveGap : 0.0f);
    const float x = std::round((at.left + at.right - width) / 2.0f);
    const float y = std::round((at.top + at.bottom - size.height()) / 2.0f);
    return gui::Rect::ofSize(x, y, size.width(), size.height());
}

/// In the middle, or as near to it as leaves those controls of the row uncovered that can be learned.
float MidiLearnController::promptLeft(float width) const {
    const float middle = localBounds().width() / 2.0f;
    float least = 0.0f;
    float most = localBounds().width();
    for (const Learned& learned : learned_) {
        if (!learned.control || !learned.control->isShown()) continue;
        const gui::Rect at = learned.control->windowBounds();
        if (at.top >= kBubbleTop + kBubbleHeight || at.bottom <= kBubbleTop) continue;
        if (at.left >= middle) most = std::min(most, at.left - kBubbleGap);
        if (at.right <= middle) least = std::max(least, at.right + kBubbleGap);
    }
    return std::max(std::min(std::max(std::round(middle - width / 2.0f), least), most - width), 0.0f);
}

void MidiLearnController::placeParts() {
    promptText_->text = prompt();
    const float width = std::ceil(promptText_->width()) + 2.0f * kBubbleMargin;
    const float all = width + kCloseWidth;
    const float left = promptLeft(all);
    bubble_ = gui::Rect::ofSize(left, kBubbleTop, width, kBubbleHeight);
    close_->bounds = gui::Rect::ofSize(bubble_.right, kBubbleTop + 3.0f, kCloseWidth, kCloseHeight);
    const bool removable = assignedController_ >= 0 && selected_ >= 0;
    remove_->visible = removable;
    if (!removable) return;
    const gui::Rect label = labelBounds(learned_[static_cast<std::size_t>(selected_)]);
    remove_->bounds =
        gui::Rect::ofSize(label.right + kRemoveGap, label.top + (label.height() - kRemoveSize) / 2.0f,
                          kRemoveSize, kRemoveSize);
}

void MidiLearnController::paintFrame(gui::Canvas& canvas, const gui::Control& control, int opacity) const {
    const gui::Rect at = control.windowBounds().translated(gui::Point{} - toWindow(gui::Point{}));
    canvas.drawFrame({at.left - kFrameDistance, at.top - kFrameDistance, at.right + kFrameDistance,
                      at.bottom + kFrameDistance},
                     kFocusColor.withAlpha(opacity), kFrameWidth);
}

void MidiLearnController::paintLabels(gui::Canvas& canvas) {
    for (std::size_t i = 0; i < learned_.size(); ++i) {
        const Learned& learned = learned_[i];
        if (!learned.control || learned.controller < 0 || !learned.control->isShown()) continue;
        const gui::Rect at = labelBounds(learned);
        const bool isSelected = static_cast<int>(i) == selected_;
        canvas.drawBitmap(isSelected ? *activeLabel_ : *label_, at.origin());
        labelText_->text = fmt::format("CC {}", learned.controller);
        canvas.drawText(*labelText_, {at.left + (at.width() - labelText_->width()) / 2.0f,
                                      at.top + gui::centredTop(*labelText_, at.height())});
    }
}

void MidiLearnController::paint(gui::Canvas& canvas) {
    Overlay::paint(canvas);
    const gui::Control* chosen =
        selected_ < 0 ? nullptr : learned_[static_cast<std::size_t>(selected_)].control;
    if (marked_ && marked_ != chosen && marked_->isShown()) paintFrame(canvas, *marked_, kMarkAlpha);
    if (chosen && chosen->isShown()) paintFrame(canvas, *chosen, 255);
    paintLabels(canvas);
    canvas.drawStretched(*bubblePicture_, bubble_, bubblePicture_->logicalRect());
    // The shadow below belongs to the picture's height.
    const float top = bubble_.top + 3.0f;
    canvas.drawText(*promptText_, {bubble_.left + kBubbleMargin, top + gui::centredTop(*promptText_, 20.0f)});
}

}  // namespace vanta::interface
