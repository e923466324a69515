#include "plugin/model/model_event_queue.hpp"

#include <algorithm>
#include <utility>

namespace vanta {

ModelEventQueue::ModelEventQueue(int parameterCount)
    : parameters_(parameterCount), programs_(kMaxPrograms, kMaxPrograms) {}

void ModelEventQueue::post(int postedKind, int postedValue) {
    switch (postedKind) {
        case Latency:
            latency_.store(true);
            break;
        case Program:
            programs_.push({static_cast<std::uint32_t>(postedValue), 0});
            break;
        case Parameter:
            postParameter(postedValue);
            break;
        case LearnedController:
            learnedController_.store(postedValue);
            break;
        case PresetName:
            presetName_.store(true);
            break;
        default:
            break;
    }
}

void ModelEventQueue::postParameter(int index) {
    if (index >= 0) return parameters_.set(index);
    const int wanted = index == kAllWithReset ? WithReset : Plain;
    // A reset that is due stays due.
    int standing = fullUpdate_.load();
    while (standing < wanted && !fullUpdate_.compare_exchange_weak(standing, wanted)) {
    }
}

void ModelEventQueue::raise(int raisedKind, int raisedValue) {
    // A handler may deliver again, as a modal dialog does; its own event must read the same afterwards.
    const int outerKind = std::exchange(kind, raisedKind);
    const int outerValue = std::exchange(value, raisedValue);
    ++delivered_;
    event.raise(this);
    kind = outerKind;
    value = outerValue;
}

int ModelEventQueue::deliver() {
    const int before = delivered_;
    if (latency_.exchange(false)) raise(Latency, 0);
    deliverParameters();
    if (presetName_.exchange(false)) raise(PresetName, 0);
    const int controller = learnedController_.exchange(kNoController);
    if (controller != kNoController) raise(LearnedController, controller);
    deliverPrograms();
    return delivered_ - before;
}

void ModelEventQueue::deliverParameters() {
    const int full = fullUpdate_.exchange(None);
    if (full != None) {
        // It carries them all.
        parameters_.clear();
        raise(Parameter, full == WithReset ? kAllWithReset : kAll);
    }
    parameters_.takeEach([this](int index) { raise(Parameter, index); });
}

void ModelEventQueue::deliverPrograms() {
    LockFreeFifo::Item item{};
    for (auto left = programs_.sizeEstimate(); left > 0 && programs_.pop(item); --left) {
        raise(Program, static_cast<int>(item.first));
    }
}

}  // namespace vanta
