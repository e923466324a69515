#include "interface/binding/model_link.hpp"

#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"
#include "interface/binding/interface_events.hpp"

namespace vanta::interface {
namespace {

struct Pair {
    int key;
    int value;
};

Pair pairOf(const ParameterChanged& changed) {
    return {event::kParameterChanged, changed.index.value_or(event::kAllParameters)};
}
Pair pairOf(const PresetChanged&) {
    return {event::kPresetChanged, 0};
}
Pair pairOf(const ControllerMoved& moved) {
    return {event::kControllerMoved, moved.number};
}
Pair pairOf(const ExtraStateReplaced&) {
    return {event::kExtraStateReplaced, 0};
}
Pair pairOf(const ControllerMapChanged&) {
    return {event::kControllerMapChanged, 0};
}

}  // namespace

ModelLink::ModelLink(GenericPlugin& linkedModel, gui::UserInterface& interface)
    : model_(linkedModel), ui_(interface), relay_(interface.relay()) {
    model_.setListener(this);
}

ModelLink::~ModelLink() {
    if (isCurrent()) model_.setListener(nullptr);
}

void ModelLink::frame() {
    if (model_.adapter() && isCurrent()) model_.adapter()->syncLevels();
    if (!lost_.exchange(false)) return;
    // Nobody knows which they were.
    for (const int key : {event::kParameterChanged, event::kPresetChanged, event::kControllerMapChanged})
        post(key, key == event::kParameterChanged ? event::kAllParameters : 0);
}

void ModelLink::onEvent(const PluginEvent& event) {
    const Pair pair = std::visit([](const auto& said) { return pairOf(said); }, event);
    post(pair.key, pair.value);
    relay_->wake();
}

void ModelLink::post(int key, int value) {
    if (!relay_->post(key, value)) lost_.store(true);
}

void ModelLink::lockInterface() {
    ui_.rootControl().lockObject();
}

void ModelLink::unlockInterface() {
    ui_.rootControl().unlockObject();
}

}  // namespace vanta::interface
