#include "gui/controls/edit_field.hpp"

#include <algorithm>

#include "gui/controls/picture.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/timer.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {
namespace {

constexpr float kMargin = 5.0f;
/// Half the time from one blink to the next. After this many halves the caret stays, so that an interface
/// that nobody uses comes to rest.
constexpr int kBlinkMs = 530;
constexpr int kMostBlinks = 40;
constexpr Color kTextColor = Color::of(0xFFF0E9E6);
constexpr Color kSelectionColor = Color::of(0xFF5C342A);
constexpr Color kCaretColor = Color::of(0xFFFFBBA9);

}  // namespace

EditField::EditField(UserInterface& interface)
    : Control(interface),
      style_(interface.createText()),
      prefix_(interface.createText()),
      frame_(loadPicture(interface, "TextEditorFrame")) {
    style_->color = kTextColor;
    blinkTimer_ = interface.createTimer();
    blinkTimer_->interval = kBlinkMs;
    blinkTimer_->onTick.setHandler(this, &EditField::blink);
}

EditField::~EditField() = default;

void EditField::focusChanged(bool hasFocus) {
    showCaret();
    blinkTimer_->running = hasFocus;
    Control::focusChanged(hasFocus);
}

void EditField::showCaret() {
    caretShown_ = true;
    blinks_ = 0;
    if (blinkTimer_->running) {
        // Anew, so that it is seen for a whole half.
        blinkTimer_->running = false;
        blinkTimer_->running = true;
    } else if (ui().rootControl().focusedControl() == this) {
        blinkTimer_->running = true;
    }
    markDirty();
}

void EditField::blink(void*) {
    caretShown_ = !caretShown_;
    if (++blinks_ >= kMostBlinks) blinkTimer_->running = false;
    markDirty();
}

bool EditField::keyDown(const KeyPress& key) {
    switch (key.key) {
        case Key::Return:
            onReturn.raise(this);
            return true;
        case Key::Escape:
            onEscape.raise(this);
            return true;
        case Key::Tab:
            onTab.raise(this);
            return true;
        default:
            break;
    }
    if (key.modifiers & modifier::kCtrl ? !command(key) : !edit(key)) return false;
    showCaret();
    return true;
}

bool EditField::command(const KeyPress& key) {
    if (key.key != Key::Character) return edit(key);
    switch (key.character) {
        case U'a':
            line_.selectAll();
            return true;
        case U'c':
        case U'x':
            if (!line_.selected().empty()) ui().setClipboard(line_.selected());
            if (key.character == U'x' && !line_.selected().empty()) line_.erase(1);
            return true;
        case U'v':
            line_.insert(ui().clipboard());
            return true;
        default:
            return false;
    }
}

bool EditField::edit(const KeyPress& key) {
    const bool selecting = key.modifiers & modifier::kShift;
    switch (key.key) {
        case Key::Character:
            if (key.character < 0x20 || (key.modifiers & modifier::kAlt)) return false;
            line_.insert(key.character);
            return true;
        case Key::Backspace:
            line_.erase(-1);
            return true;
        case Key::Delete:
            line_.erase(1);
            return true;
        case Key::Left:
            line_.moveBy(-1, selecting);
            return true;
        case Key::Right:
            line_.moveBy(1, selecting);
            return true;
        case Key::Home:
        case Key::Up:
            line_.moveTo(0, selecting);
            return true;
        case Key::End:
        case Key::Down:
            line_.moveTo(line_.text().size(), selecting);
            return true;
        default:
            return false;
    }
}

float EditField::widthTo(std::size_t position) {
    if (position == 0) return 0.0f;
    prefix_->copyStyleFrom(*style_);
    prefix_->text = line_.text().substr(0, position);
    return prefix_->width();
}

float EditField::textLeft() {
    const float room = localBounds().width() - 2.0f * kMargin;
    const float length = widthTo(line_.text().size());
    if (length <= room) return kMargin + alignedOffset(alignment, room, length);
    return kMargin - std::max(widthTo(line_.caret()) - room, 0.0f);
}

std::size_t EditField::positionAt(float x) {
    const float left = textLeft();
    const std::size_t end = line_.text().size();
    for (std::size_t at = 0; at < end;) {
        const std::size_t next = line_.neighbour(at, 1);
        if (x < left + (widthTo(at) + widthTo(next)) / 2.0f) return at;
        at = next;
    }
    return end;
}

void EditField::mouseDown(int button, Point point, int modifiers) {
    takeFocus();
    Control::mouseDown(button, point, modifiers);
    if (button != kLeftPress || (modifiers & modifier::kDoubleClick)) return;
    selecting_ = true;
    line_.moveTo(positionAt(point.x), modifiers & modifier::kShift);
    showCaret();
}

void EditField::mouseMove(Point point, int modifiers) {
    Control::mouseMove(point, modifiers);
    if (!selecting_) return;
    line_.moveTo(positionAt(point.x), true);
    showCaret();
}

void EditField::mouseUp(int button, Point point, int modifiers) {
    selecting_ = false;
    Control::mouseUp(button, point, modifiers);
}

void EditField::doubleClick() {
    line_.selectAll();
    markDirty();
    Control::doubleClick();
}

void EditField::paint(Canvas& canvas) {
    canvas.drawStretched(*frame_, localBounds(), frame_->logicalRect());
    const Rect inner{kMargin, 2.0f, localBounds().right - kMargin + 1.0f, localBounds().bottom - 2.0f};
    canvas.clip = inner.intersected(canvas.clip);
    style_->text = line_.text();
    const float left = textLeft();
    const float top = centredTop(*style_, localBounds().height());
    const float from = widthTo(line_.selectionStart()), to = widthTo(line_.selectionEnd());
    canvas.fillRect({left + from, inner.top + 1.0f, left + to, inner.bottom - 1.0f}, kSelectionColor);
    canvas.drawText(*style_, {left, top});
    if (!caretShown_ || ui().rootControl().focusedControl() != this) return;
    const float caret = left + widthTo(line_.caret());
    canvas.fillRect({caret, inner.top + 1.0f, caret + 1.0f, inner.bottom - 1.0f}, kCaretColor);
}

}  // namespace vanta::gui
