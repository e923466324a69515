#include "host/vst3/reports.hpp"

#include <utility>

#include "host/vst3/parameter_list.hpp"

namespace vanta::vst3 {

void Reports::setParameters(const ParameterList& parameters) {
    parameters_ = &parameters;
    pending_.emplace(parameters.ownCount());
    held_.resize(static_cast<std::size_t>(parameters.ownCount()));
}

void Reports::setHandler(v3_component_handler** handler) {
    HostInterface<v3_component_handler> first(handler);
    auto second = HostInterface<v3_component_handler2>::of(handler, v3_component_handler2_iid);
    // What was there before is given back after the lock.
    const std::lock_guard held(handlerMutex_);
    handler_ = std::move(first);
    handler2_ = std::move(second);
}

void Reports::setActive(bool active) {
    latencyHolds();
    active_.store(active);
}

double Reports::positionOf(int index, float value) const {
    return parameters_->range(index).positionOf(static_cast<double>(value));
}

void Reports::parameterEdited(int index, Edit change, float value) {
    if (canTell()) {
        edit(index, change, positionOf(index, value));
    } else {
        pending_->add(index, change, value);
    }
}

void Reports::edit(int index, Edit change, double position) {
    const auto id = static_cast<v3_param_id>(index);
    auto held = held_[static_cast<std::size_t>(index)];
    const bool alone = change == Edit::Value && !held;
    if (change == Edit::Begin || alone) handler_.call(&v3_component_handler::begin_edit, id);
    if (change == Edit::Value) handler_.call(&v3_component_handler::perform_edit, id, position);
    if (change == Edit::End || alone) handler_.call(&v3_component_handler::end_edit, id);
    if (change != Edit::Value) held = change == Edit::Begin;
}

void Reports::beginEdits() {
    if (handler2_ && canTell()) handler2_.call(&v3_component_handler2::start_group_edit);
}

void Reports::endEdits() {
    if (handler2_ && canTell()) handler2_.call(&v3_component_handler2::finish_group_edit);
}

void Reports::stateRestored() {
    valuesReplaced();
    presetChanged_.store(true);
}

void Reports::stateChanged() {
    dirty_.store(true);
    presetChanged_.store(true);
}

void Reports::latencyChanged() {
    if (active_.load()) restartFlags_.fetch_or(V3_RESTART_LATENCY_CHANGED);
}

void Reports::tell() {
    if (!canTell()) return;
    pending_->take([this](int index, Edit change, float value) {
        edit(index, change, positionOf(index, value));
        return true;
    });
    tellRestarts();
}

void Reports::tellRestarts() {
    // A handler that the host replaces meanwhile has to last for as long as the calls.
    std::unique_lock held(handlerMutex_);
    const HostInterface<v3_component_handler> handler(handler_.get());
    const HostInterface<v3_component_handler2> handler2(handler2_.get());
    held.unlock();
    if (handler2 && dirty_.exchange(false)) handler2.call(&v3_component_handler2::set_dirty, v3_bool{1});
    if (!handler) return;
    if (const int flags = restartFlags_.exchange(0)) {
        handler.call(&v3_component_handler::restart_component, flags);
    }
}

void Reports::tellWithBlock(v3_param_changes** changes) {
    if (!changes) return;
    pending_->takeValues([&](int index, float value) {
        const auto id = static_cast<v3_param_id>(index);
        v3_param_id wanted = id;
        std::int32_t at = 0;
        v3_param_value_queue** queue = v3_cpp_obj(changes)->add_param_data(changes, &wanted, &at);
        return queue && v3_cpp_obj(queue)->add_point(queue, 0, positionOf(index, value), &at) == V3_OK;
    });
}

}  // namespace vanta::vst3
