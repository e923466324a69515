#include "gui/controls/label.hpp"

#include <algorithm>

#include "gui/graphics/bitmap.hpp"
#include "gui/graphics/canvas.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {
namespace {

/// Of what cannot be used.
constexpr int kDisabledAlpha = 90;
constexpr Color kTextColor = Color::of(0xFFC8C8C8);

}  // namespace

MultiLabel::MultiLabel(UserInterface& interface, int lineCount)
    : Control(interface), style_(interface.createText()) {
    style_->fontSize = 8.25f;
    style_->color = kTextColor;
    style_->onChange.setHandler(this, &MultiLabel::styleChanged);
    lines = lineCount;
    setLineCount(lines);
}

std::unique_ptr<Text> MultiLabel::makeText() const {
    std::unique_ptr<Text> made = ui().createText();
    made->copyStyleFrom(*style_);
    return made;
}

void MultiLabel::setLineCount(int count) {
    while (static_cast<int>(texts_.size()) < count) {
        texts_.push_back(makeText());
        shadows_.push_back(makeText());
    }
    texts_.resize(static_cast<std::size_t>(count));
    shadows_.resize(texts_.size());
    styleChanged(nullptr);
}

void MultiLabel::setText(int line, const std::string& text) {
    const auto at = static_cast<std::size_t>(line);
    texts_[at]->text = text;
    shadows_[at]->text = text;
    markDirty();
}

void MultiLabel::styleChanged(void*) {
    for (std::size_t i = 0; i < texts_.size(); ++i) {
        const std::string kept = texts_[i]->text;
        for (Text* text : {texts_[i].get(), shadows_[i].get()}) {
            text->copyStyleFrom(*style_);
            text->text = kept;
        }
        if (textColor.value().alpha > 0) texts_[i]->color = textColor.value();
        shadows_[i]->color = shadowColor.value();
    }
    markDirty();
}

void MultiLabel::propertyChanged(AbstractProperty& property) {
    if (&property == &lines) {
        setLineCount(lines);
    } else if (&property == &textColor || &property == &shadowColor) {
        styleChanged(nullptr);
    } else {
        Control::propertyChanged(property);
        markDirty();
    }
}

float MultiLabel::textWidth() {
    float widest = 0.0f;
    for (const auto& text : texts_) widest = std::max(widest, text->width());
    return widest;
}

void MultiLabel::paintLines(Canvas& canvas, std::vector<std::unique_ptr<Text>>& texts, float shift) {
    const float step = texts.front()->height() * lineHeight;
    const float all = step * static_cast<float>(texts.size() - 1) + texts.front()->height();
    const float room = localBounds().height();
    float y = topMargin;
    if (layout == Layout::Middle) y = (room - all) / 2.0f - texts.front()->baselineOffset();
    if (layout == Layout::Bottom) y = room - bottomMargin - all;
    for (const auto& text : texts) {
        const float x = alignedOffset(alignment, localBounds().width(), text->width());
        canvas.drawText(*text, {x, y + shift}, enabledLook ? 255 : kDisabledAlpha);
        y += step;
    }
}

void MultiLabel::paint(Canvas& canvas) {
    if (shadowColor.value().alpha > 0) paintLines(canvas, shadows_, 1.0f);
    paintLines(canvas, texts_, 0.0f);
}

}  // namespace vanta::gui
