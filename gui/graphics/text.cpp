#include "gui/graphics/text.hpp"

namespace vanta::gui {

void Text::copyStyleFrom(const Text& other) {
    const UpdateBlock block(*this);
    bold = other.bold.value();
    color = other.color.value();
    italic = other.italic.value();
    lineStyle = other.lineStyle.value();
    maxWidth = other.maxWidth.value();
    fontSize = other.fontSize.value();
    fontName = other.fontName.value();
    underline = other.underline.value();
    letterSpacing = other.letterSpacing.value();
    text = other.text.value();
}

void Text::propertyChanged(AbstractProperty& /*property*/) {
    invalidate();
}

void Text::update() {
    UpdatedObject::update();
    onChange.raise(this);
}

}  // namespace vanta::gui
