#include "wave/environment.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

#include "foundation/numbers.hpp"
#include "wave/basic_block.hpp"
#include "wave/producer.hpp"

namespace vanta::wave {

Environment::Environment(int maxBlock) : Environment(maxBlock, maxBlock) {}

Environment::Environment(int blockLimit, int silentSamples)
    : blockLimit_(blockLimit), silentBlock_(std::make_unique<BasicBlock<float>>(*this, silentSamples)) {}

Environment::~Environment() = default;

void Environment::run(int samples, int flags) {
    const int own = samples * rateFactor();
    if (flags & kPositionOnly) {
        // Nobody pulls: what rested has missed a block.
        if (root_ == this) latestEpoch_ += 2;
        epoch_ = root_->latestEpoch_;
    } else {
        runProcessList(own);
    }
    position_ += own;
    for (SubEnvironment* child : children_) child->run(own, flags);
}

void Environment::runProcessList(int samples) {
    for (Producer* node : processList_) {
        const bool front = node->scheduleGroup_ == kFrontGroup;
        if (!front && (node->stamp_ == tick_ || node->rests(samples))) continue;
        node->compute(samples, front ? kFrontRun : kBackRun);
    }
}

void Environment::advanceTick() {
    root_->checkedGates_ = 0;
    if (std::exchange(root_->changed_, false)) ++root_->latestEpoch_;
    beginTick(root_->latestEpoch_);
}

void Environment::beginTick(std::uint32_t epoch) {
    ++tick_;
    if (epoch != epoch_) {
        epoch_ = epoch;
        epochStart_ = position_;
    }
    for (SubEnvironment* child : children_) child->beginTick(epoch);
}

GateSet Environment::addGate(Producer* gate) {
    for (std::size_t i = 0; i < root_->gates_.size(); ++i) {
        if (root_->gates_[i].node) continue;
        root_->gates_[i].node = gate;
        return GateSet{1} << i;
    }
    return 0;
}

void Environment::removeGate(GateSet gate) {
    if (gate == 0) return;
    // Whoever still counts on it must not.
    noteChange();
    root_->gates_[static_cast<std::size_t>(std::countr_zero(gate))].node = nullptr;
}

void Environment::checkAnew(GateSet gates, int rootSamples) {
    for (GateSet left = gates & ~checkedGates_; left != 0; left = gates & ~checkedGates_) {
        checkedGates_ |= left & (~left + 1);
        Producer* gate = gates_[static_cast<std::size_t>(std::countr_zero(left))].node;
        if (gate && !gate->produced()) {
            gate->bringUpToDate(rootSamples * gate->environment().wholeFactor());
        }
    }
}

void Environment::noteOpening(GateSet gate) {
    if (gate == 0) return;
    Gate& entry = root_->gates_[static_cast<std::size_t>(std::countr_zero(gate))];
    entry.opening = ++root_->openings_;
    entry.openingTick = root_->tick_;
}

std::uint64_t Environment::lastOpening(GateSet gates) const {
    std::uint64_t last = 0;
    for (; gates != 0; gates &= gates - 1) {
        last = std::max(last, gates_[static_cast<std::size_t>(std::countr_zero(gates))].opening);
    }
    return last;
}

bool Environment::stayedClosedUntilNow(GateSet gates, std::uint64_t openings) const {
    for (; gates != 0; gates &= gates - 1) {
        const Gate& gate = root_->gates_[static_cast<std::size_t>(std::countr_zero(gates))];
        if (gate.opening > openings && gate.openingTick != root_->tick_) return false;
    }
    return true;
}

void Environment::resetGraph(ResetMode mode) {
    noteChange();
    discontinuityPosition_ = position_;
    if (mode != ResetMode::MarkDiscontinuity) {
        resetPosition_ = position_;
        for (Producer* node : resetList_) {
            if (mode == ResetMode::ResetAll || (node->active_ && !node->kept_)) node->reset();
        }
    }
    if (mode == ResetMode::ResetActiveLocal) return;
    for (SubEnvironment* child : children_) child->resetGraph(mode);
}

void Environment::prepareNodes() {
    noteChange();
    for (Producer* node : resetList_) node->prepare();
}

void Environment::setSampleRate(float rate) {
    const float old = sampleRate_;
    sampleRate_ = rate;
    for (SubEnvironment* child : children_) {
        child->setSampleRate(static_cast<float>(child->factor()) * rate);
    }
    if (nearlyEqual(rate, old)) return;
    discontinuityPosition_ = resetPosition_ = position_;
    prepareNodes();
    for (Producer* node : resetList_) node->reset();
    for (SubEnvironment* child : children_) child->resetGraph(ResetMode::ResetAll);
    sampleRateChanged.raise(this);
}

void Environment::expectHostBlocks(int samples) {
    int longest = longestHostBlock();
    while (longest < samples && !longestHostBlock_.compare_exchange_weak(longest, samples)) {
    }
}

void Environment::schedule(Producer* node, int group) {
    if (group == kFrontGroup) {
        processList_.insert(processList_.begin(), node);
        ++frontCount_;
    } else if (group == kBackGroup) {
        processList_.insert(processList_.begin() + frontCount_, node);
    } else {
        processList_.push_back(node);
    }
}

void Environment::unschedule(Producer* node) {
    if (destroying_) return;
    const auto found = std::find(processList_.begin(), processList_.end(), node);
    if (found == processList_.end()) return;
    if (node->scheduleGroup_ == kFrontGroup) --frontCount_;
    processList_.erase(found);
}

void Environment::addResettable(Producer* node) {
    resetList_.push_back(node);
}

void Environment::removeResettable(Producer* node) {
    if (!destroying_) std::erase(resetList_, node);
}

void Environment::setDestroying() {
    destroying_ = true;
    for (SubEnvironment* child : children_) child->setDestroying();
}

void Environment::setMeteringActive(bool active) {
    meteringActive_ = active;
    for (SubEnvironment* child : children_) child->setMeteringActive(active);
}

void Environment::registerNode() {
    ++producerCount_;
    // Doubling by hand keeps the growth cheap; a built graph never allocates when nodes come and go.
    const auto needed = static_cast<std::size_t>(producerCount_);
    if (processList_.capacity() < needed) processList_.reserve(2 * needed);
    if (resetList_.capacity() < needed) resetList_.reserve(2 * needed);
}

// The silent block has room for the largest factor, so that it never has to grow.
SubEnvironment::SubEnvironment(Environment& parent)
    : Environment(parent.blockLimit() * kMaxFactor, parent.blockLimit() * kMaxFactor), parent_(parent) {
    parent_.children_.push_back(this);
    root_ = parent_.root_;
    setSampleRate(parent_.sampleRate());
}

SubEnvironment::~SubEnvironment() {
    std::erase(parent_.children_, this);
}

void SubEnvironment::addBlockListener(DynamicMaxBlockSizeListener* listener) {
    blockListeners_.push_back(listener);
}

void SubEnvironment::removeBlockListener(DynamicMaxBlockSizeListener* listener) {
    if (destroying()) return;
    // Nodes mostly go in the reverse order of their making.
    for (std::size_t i = blockListeners_.size(); i-- > 0;) {
        if (blockListeners_[i] != listener) continue;
        blockListeners_.erase(blockListeners_.begin() + static_cast<std::ptrdiff_t>(i));
        return;
    }
}

void SubEnvironment::setFactor(int factor) {
    if (factor == factor_) return;
    factor_ = factor;
    noteChange();
    for (DynamicMaxBlockSizeListener* listener : blockListeners_) listener->maxBlockSizeChanged();
    setSampleRate(static_cast<float>(factor) * parent_.sampleRate());
    parent_.prepareNodes();
    parent_.resetGraph(ResetMode::ResetActiveLocal);
}

}  // namespace vanta::wave
