#include "gui/controls/light.hpp"

#include "gui/animation/value_animation.hpp"
#include "gui/controls/picture.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {

Light::Style::Style(UserInterface& interface) : Component(interface) {
    setImages({}, {});
}

void Light::Style::setImages(const std::string& offImage, const std::string& onImage) {
    off = loadPicture(ui(), offImage);
    on = loadPicture(ui(), onImage);
}

Light::Light(UserInterface& interface, Animator* animatedBy, Style* sharedStyle)
    : AnimatedControl(interface, animatedBy), style_(sharedStyle ? sharedStyle : &interface.make<Style>()) {}

void Light::propertyChanged(AbstractProperty& property) {
    if (&property != &on) return AnimatedControl::propertyChanged(property);
    const int target = on ? 255 : 0;
    if (animator()) {
        auto* fade = new ValueAnimation<int>(*animator(), this, mix_, target);
        fade->duration = on ? kOnMs : kOffMs;
    } else {
        mix_ = target;
    }
    markDirty();
}

void Light::flash() {
    if (!flashTimer_) {
        flashTimer_ = ui().createTimer();
        flashTimer_->interval = kFlashMs;
        flashTimer_->onTick.setHandler(this, &Light::flashOver);
    }
    flashTimer_->running = false;
    flashTimer_->running = true;
    on = true;
}

void Light::flashOver(void*) {
    flashTimer_->running = false;
    on = false;
}

int Light::alphaAt(Point point) {
    return opacityAt(*style_->off, point);
}

void Light::paint(Canvas& canvas) {
    if (mix_ < 255) canvas.drawBitmap(*style_->off, Point{});
    if (mix_ > 0) canvas.drawBitmap(*style_->on, Point{}, mix_);
}

}  // namespace vanta::gui
