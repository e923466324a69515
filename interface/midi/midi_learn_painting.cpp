#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "gui/controls/alignment.hpp"
#include "gui/controls/button.hpp"
#include "gui/controls/picture.hpp"
#include "gui/graphics/canvas.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"
#include "interface/controls/styles.hpp"
#include "interface/midi/midi_learn_controller.hpp"

namespace vanta::interface {
namespace {

/// On the top bar, where the fewest controls are that can be learned.
constexpr float kBubbleTop = 4.0f;
constexpr float kBubbleHeight = 32.0f;
/// Of the plate within the bubble: its shadow lies around it.
constexpr gui::Rect kPlateInset{4.0f, 3.0f, 4.0f, 5.0f};
/// Of the bubble's text from its sides, shadow included.
constexpr float kBubbleMargin = 14.0f;
constexpr float kBubbleGap = 4.0f;
constexpr float kCloseWidth = 48.0f;
constexpr float kCloseHeight = 20.0f;
constexpr float kCloseInset = 2.0f;  ///< from the plate's edges
constexpr float kRemoveSize = 12.0f;
constexpr float kRemoveGap = 2.0f;
constexpr float kFrameDistance = 2.0f;
constexpr float kFrameWidth = 1.0f;
constexpr int kMarkAlpha = 110;

/// A button that `room` would cover in part it covers altogether: half a caption is nothing to look at.
void coverWhole(const gui::Control& tree, const gui::Control* ownTree, gui::Rect& room) {
    for (const gui::Control* control : tree.children()) {
        if (control == ownTree || !control->visible) continue;
        coverWhole(*control, ownTree, room);
        const gui::Rect at = control->windowBounds();
        if (dynamic_cast<const gui::Button*>(control) && !at.intersected(room).isEmpty())
            room = {std::min(room.left, at.left), room.top, std::max(room.right, at.right), room.bottom};
    }
}

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
    const float width = std::ceil(promptText_->width()) + 2.0f * kBubbleMargin + kCloseWidth + kCloseInset;
    bubble_ = gui::Rect::ofSize(promptLeft(width), kBubbleTop, width, kBubbleHeight);
    gui::Rect plate{bubble_.left + kPlateInset.left, bubble_.top + kPlateInset.top,
                    bubble_.right - kPlateInset.right, bubble_.bottom - kPlateInset.bottom};
    coverWhole(ui().rootControl(), this, plate);
    bubble_.left = plate.left - kPlateInset.left;
    bubble_.right = plate.right + kPlateInset.right;
    close_->bounds = gui::Rect::ofSize(plate.right - kCloseInset - kCloseWidth, plate.top + kCloseInset,
                                       kCloseWidth, kCloseHeight);
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
    // In the middle of what the button leaves.
    const float room = close_->bounds.value().left - bubble_.left - kPlateInset.left;
    canvas.drawText(
        *promptText_,
        {bubble_.left + kPlateInset.left + std::round((room - promptText_->width()) / 2.0f),
         bubble_.top + kPlateInset.top +
             gui::centredTop(*promptText_, kBubbleHeight - kPlateInset.top - kPlateInset.bottom)});
}

}  // namespace vanta::interface
