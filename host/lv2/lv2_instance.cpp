#include "host/lv2/lv2_instance.hpp"

#include <map>
#include <mutex>

#include "plugin/model/generic_plugin.hpp"

namespace vanta {

Lv2Instance::Lv2Instance(const Lv2Layout& layout, bool takesRequests)
    : interfaceEdits_(hostParameterCount()),
      link_(hostParameterCount()),
      plugin_(*this, layout.layout),
      parameters_(describeParameters(plugin_.model())),
      values_(makeControls()) {
    if (takesRequests) requests_.emplace(hostParameterCount());
}

std::vector<Lv2Control> Lv2Instance::makeControls() const {
    std::vector<Lv2Control> controls;
    for (const HostParameter& described : parameters_) {
        controls.emplace_back(*plugin_.model().parameterAt(described.index), described);
    }
    return controls;
}

void Lv2Instance::forgetEdits() {
    // A port that was asked for what the state has overtaken would come back as the host's own wish.
    if (requests_) requests_->forgetValues();
    values_.expectNothing();
}

void Lv2Instance::detach() {
    if (interfaces_.fetch_sub(1) == 1) values_.expectNothing();
}

void Lv2Instance::parameterEdited(int index, Edit edit, float value) {
    if (edit == Edit::Value) stateChanged_.store(true);
    if (interfaces_.load() > 0) {
        interfaceEdits_.add(index, edit, value);
    } else if (edit == Edit::Value && requests_) {
        requests_->add(index, edit, value);
    }
}

void Lv2Instance::pumpedByThread() {
    if (link_.service(plugin_)) stateChanged_.store(true);
}

// All of them

namespace {

struct Known {
    std::mutex mutex;
    std::map<LV2_Handle, std::weak_ptr<Lv2Instance>> instances;
};

Known& known() {
    static Known all;
    return all;
}

}  // namespace

void Lv2Instances::add(LV2_Handle handle, const std::shared_ptr<Lv2Instance>& instance) {
    const std::lock_guard held(known().mutex);
    known().instances[handle] = instance;
}

void Lv2Instances::remove(LV2_Handle handle) {
    const std::lock_guard held(known().mutex);
    known().instances.erase(handle);
}

std::shared_ptr<Lv2Instance> Lv2Instances::find(LV2_Handle handle) {
    const std::lock_guard held(known().mutex);
    const auto found = known().instances.find(handle);
    return found == known().instances.end() ? nullptr : found->second.lock();
}

}  // namespace vanta
