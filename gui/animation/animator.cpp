#include "gui/animation/animator.hpp"

#include <algorithm>
#include <utility>

#include "gui/tree/timer.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {

Animator::Animator(UserInterface& interface) : Component(interface), timer_(interface.createTimer()) {
    timer_->frameLocked = true;
    timer_->interval = 1000 / framesPerSecond;
    timer_->onTick.setHandler(this, &Animator::frame);
}

Animator::~Animator() {
    inFrame_ = false;
    drop([](const Entry&) { return true; });
    sweep();
}

void Animator::propertyChanged(AbstractProperty& /*property*/) {
    timer_->interval = 1000 / std::max(framesPerSecond.value(), 1);
    timer_->running = running.value();
}

void Animator::add(AnimatedObject* object, Control* control, const void* target) {
    // At once even within a frame: the newcomer has already read where its target stands.
    cancel(target);
    if (!object) {
        removeAll(control);
    } else {
        (inFrame_ ? pending_ : objects_).push_back({object, control, target});
    }
}

void Animator::remove(AnimatedObject* object) {
    if (object) drop([&](const Entry& entry) { return entry.object == object; });
}

void Animator::removeAll(const Control* control) {
    if (control) drop([&](const Entry& entry) { return entry.control == control; });
}

void Animator::cancel(const void* target) {
    if (target) drop([&](const Entry& entry) { return entry.target == target; });
}

void Animator::forget(const AnimatedObject* object) {
    for (auto* list : {&objects_, &pending_}) {
        for (Entry& entry : *list) {
            if (entry.object == object) entry = {};
        }
    }
    std::replace(removed_.begin(), removed_.end(), const_cast<AnimatedObject*>(object),
                 static_cast<AnimatedObject*>(nullptr));
    if (!inFrame_) sweep();
}

template <typename Matches>
void Animator::drop(Matches matches) {
    for (auto* list : {&objects_, &pending_}) {
        for (Entry& entry : *list) {
            if (entry.object && matches(entry)) removed_.push_back(std::exchange(entry, Entry{}).object);
        }
    }
    if (!inFrame_) sweep();
}

/// The end of an object may be that of others.
void Animator::sweep() {
    std::erase_if(objects_, [](const Entry& entry) { return !entry.object; });
    std::erase_if(pending_, [](const Entry& entry) { return !entry.object; });
    while (!removed_.empty()) {
        AnimatedObject* object = removed_.back();
        removed_.pop_back();
        if (object) object->deleteSelf();
    }
}

void Animator::frame(void* /*sender*/) {
    inFrame_ = true;
    onFrame.raise(this);
    for (std::size_t i = 0; i < objects_.size(); ++i) {
        if (AnimatedObject* object = objects_[i].object) object->animate();
    }
    inFrame_ = false;
    sweep();
    objects_.insert(objects_.end(), pending_.begin(), pending_.end());
    pending_.clear();
}

}  // namespace vanta::gui
