#include "plugin/model/compare_states.hpp"

#include <utility>

namespace vanta {

void CompareStates::initialize() {
    const std::lock_guard lock(mutex_);
    if (initialized_) return;
    store(current_);
    store(otherThan(current_));
    modified_ = false;
    initialized_ = true;
}

void CompareStates::copyToOther() {
    const std::lock_guard lock(mutex_);
    store(otherThan(current_));
    modified_ = false;
}

void CompareStates::switchTo(int slot) {
    const std::lock_guard lock(mutex_);
    if (slot == current_) return;
    store(current_);
    current_ = slot;
}

void CompareStates::markModified() {
    const std::lock_guard lock(mutex_);
    modified_ = true;
}

int CompareStates::current() const {
    const std::lock_guard lock(mutex_);
    return current_;
}

int CompareStates::other() const {
    return otherThan(current());
}

bool CompareStates::modified() const {
    const std::lock_guard lock(mutex_);
    return modified_;
}

State CompareStates::state(int slot) const {
    const std::lock_guard lock(mutex_);
    return states_.at(slot);
}

CompareStates::Contents CompareStates::contents() {
    const std::lock_guard lock(mutex_);
    if (initialized_) store(current_);
    return {current_, modified_, initialized_, {states_.at(0), states_.at(1)}};
}

void CompareStates::setContents(Contents contents) {
    const std::lock_guard lock(mutex_);
    current_ = contents.current;
    modified_ = contents.modified;
    initialized_ = contents.initialized;
    for (int i = 0; i < kSlots; ++i) states_.at(i) = std::move(contents.slots[static_cast<std::size_t>(i)]);
}

}  // namespace vanta
