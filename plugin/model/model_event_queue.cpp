#include "plugin/model/model_event_queue.hpp"

namespace vanta {

ModelEventQueue::ModelEventQueue(int parameterCount)
    : parameters_(parameterCount), programs_(kMaxPrograms, kMaxPrograms) {}

void ModelEventQueue::post(const ModelEvent& event) {
    std::visit([this](const auto& posted) { mark(posted); }, event);
}

void ModelEventQueue::mark(const ParameterUpdated& update) {
    if (update.index) return parameters_.set(*update.index);
    allParameters_.store(true);
}

void ModelEventQueue::mark(const ProgramRequested& request) {
    const LockFreeFifo::Item item{static_cast<std::uint32_t>(request.bank),
                                  static_cast<std::uint32_t>(request.program)};
    // The last one is what the player hears in the end.
    LockFreeFifo::Item oldest{};
    while (!programs_.push(item)) programs_.pop(oldest);
}

bool ModelEventQueue::isDue() const {
    return latency_.load() || allParameters_.load() || parameters_.any() || presetName_.load() ||
           controllerMap_.load() || movedController_.load() != kNoController || programs_.sizeEstimate() > 0;
}

int ModelEventQueue::deliver(const std::function<void(const ModelEvent&)>& handle) {
    int count = 0;
    const auto raise = [&](const ModelEvent& event) {
        ++count;
        handle(event);
    };
    if (latency_.exchange(false)) raise(LatencyChanged{});
    if (allParameters_.exchange(false)) {
        parameters_.clear();  // it carries them all
        raise(ParameterUpdated{});
    }
    parameters_.takeEach([&](int index) { raise(ParameterUpdated{index}); });
    if (presetName_.exchange(false)) raise(PresetNameChanged{});
    if (controllerMap_.exchange(false)) raise(ControllerMapChanged{});
    const int controller = movedController_.exchange(kNoController);
    if (controller != kNoController) raise(ControllerMoved{controller});
    LockFreeFifo::Item item{};
    // Only what stood there at the start, as a handler may cause the next one.
    for (auto left = programs_.sizeEstimate(); left > 0 && programs_.pop(item); --left) {
        raise(ProgramRequested{static_cast<int>(item.first), static_cast<int>(item.second)});
    }
    return count;
}

}  // namespace vanta
