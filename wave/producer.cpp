#include "wave/producer.hpp"

#include <algorithm>
#include <cstring>

#include "kernel/mix.hpp"
#include "kernel/scan.hpp"

namespace vanta::wave {

namespace {

/// Of either sign. Sound mostly shows at its first sample.
bool isSilent(const float* data, int samples) {
    return samples == 0 ||
           (data[0] == 0.0f && kernel::highestMagnitude(data, static_cast<std::size_t>(samples)) == 0.0f);
}

/// Each sample is the same as the next: of sound this reads no more than the beginning.
bool isEven(const float* data, int samples) {
    return std::memcmp(data, data + 1, static_cast<std::size_t>(samples - 1) * sizeof(float)) == 0 ||
           isSilent(data, samples);
}

}  // namespace

Producer::Producer(Environment& owner, OwnBlock ownBlock)
    : Component(owner),
      ownBlock_(ownBlock == OwnBlock::Yes ? std::make_unique<BasicBlock<float>>(owner) : nullptr),
      current_(&owner.silentBlock()) {
    owner.registerNode();
}

Producer::~Producer() {
    if (scheduled_ && active_) environment().unschedule(this);
    if (resettable_) environment().removeResettable(this);
    environment().removeGate(gate_);
}

void Producer::setScheduled(int group) {
    if (active_ && scheduled_) environment().unschedule(this);
    scheduleGroup_ = group;
    scheduled_ = true;
    if (active_) environment().schedule(this, group);
}

void Producer::setActive(bool active) {
    if (active == active_) return;
    active_ = active;
    environment().noteChange();
    if (active) {
        if (scheduled_) environment().schedule(this, scheduleGroup_);
        if (resettable_) reset();
    } else if (scheduled_) {
        environment().unschedule(this);
    }
}

void Producer::makeResettable() {
    if (resettable_) return;
    resettable_ = true;
    environment().addResettable(this);
}

void Producer::bringUpToDate(int samples) {
    if (rests(samples)) {
        stamp_ = environment().tick();
    } else {
        compute(samples, 0);
    }
}

void Producer::compute(int samples, int flags) {
    current_ = ownBlock_.get();
    blockFlags_ = 0;
    const Environment::Reads reads = environment().readsOf([&] { produce(ownBlock_.get(), samples, flags); });
    stamp_ = environment().tick();
    restEpoch_ = 0;
    if (reads.rest && settled()) beginRest(samples, reads.gates);
    if (gate_ != 0) moveGate(samples);
}

bool Producer::rests(int samples) {
    if (!mayRest(samples)) return false;
    if (restGates_ == 0) return true;
    if (restGates_ == gate_) return false;
    environment().checkGates(restGates_, samples);
    return isResting();
}

void Producer::makeGate() {
    if (gate_ == 0) gate_ = environment().addGate(this);
}

/// After a block that was computed.
void Producer::moveGate(int samples) {
    const bool silent = isConstant() && (*current_)[0] == 0.0f;
    if (closed_ && !silent) environment().noteOpening(gate_);
    closed_ = silent;
    if (silent && restEpoch_ == 0) beginRest(samples, gate_);
}

// What has come to rest within the block has not stood still from its beginning: the next one will.
void Producer::beginRest(int samples, GateSet gates) {
    if (!isConstant()) {
        if (!isEven(current_->data(), samples)) return;
        blockFlags_ |= kOneValue;
    }
    restEpoch_ = environment().epoch();
    restSamples_ = samples;
    restGates_ = gates;
    restOpenings_ = environment().openings();
}

void Input::setBuffer(const float* data, int samples) {
    data_ = data;
    size_ = data ? samples : 0;
    start_ = environment().position();
    const bool silent = isSilent(data, size_);
    if (silent != silent_) environment().noteChange();
    silent_ = silent;
}

void Input::produce(BasicBlock<float>* block, int samples, int) {
    if (silent_) {
        publishSilence();
        return;
    }
    const std::int64_t done = environment().position() - start_;
    const int count = static_cast<int>(std::clamp<std::int64_t>(size_ - done, 0, samples));
    if (count > 0) kernel::sanitize(data_ + done, block->data(), static_cast<std::size_t>(count));
    std::fill(block->data() + count, block->data() + samples, 0.0f);
}

}  // namespace vanta::wave
