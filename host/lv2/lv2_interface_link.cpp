#include "host/lv2/lv2_interface_link.hpp"

#include <utility>

namespace vanta {

Lv2SameInstance::Lv2SameInstance(std::shared_ptr<Lv2Instance> shown)
    : instance_(std::move(shown)), awaitedUntil_(instance_->parameters().size()) {
    instance_->attach();
}

Lv2SameInstance::~Lv2SameInstance() {
    instance_->detach();
}

const Lv2Control& Lv2SameInstance::control(int index) const {
    return instance_->values().control(static_cast<std::size_t>(index));
}

void Lv2SameInstance::valueTold(int index, float shown, Clock::time_point now) {
    const auto i = static_cast<std::size_t>(index);
    instance_->values().expect(i, shown);
    awaitedUntil_[i] = now + kPortPatience;
}

void Lv2SameInstance::idle(Clock::time_point now) {
    for (std::size_t i = 0; i < awaitedUntil_.size(); ++i) {
        if (!awaitedUntil_[i] || now < *awaitedUntil_[i]) continue;
        instance_->values().expectNothing(i);
        awaitedUntil_[i].reset();
    }
}

}  // namespace vanta
