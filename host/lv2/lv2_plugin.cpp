#include "host/lv2/lv2_plugin.hpp"

#include <algorithm>
#include <limits>

#include "foundation/realtime.hpp"
#include "host/lv2/lv2_state.hpp"
#include "plugin/model/generic_plugin.hpp"

namespace vanta {

Lv2Plugin::Lv2Plugin(const Lv2Layout& layout, double sampleRate, const Lv2Features& features)
    : uris_(*features.map),
      portRequests_(features.portRequests),
      largestBlock_(features.largestBlock(uris_)),
      sampleRate_(sampleRate),
      keyChannel_(static_cast<std::size_t>(lv2Channels(layout.layout).front().channel)),
      plugin_(*this, layout.layout),
      parameters_(describeParameters(plugin_.model())),
      ports_(lv2Ports(layout.layout, parameters_)),
      values_(makeControls()) {
    if (portRequests_) edits_.emplace(static_cast<int>(parameters_.size()));
    changes_.reserve(parameters_.size());
    plugin_.pumpByThread();
}

std::vector<Lv2Control> Lv2Plugin::makeControls() const {
    std::vector<Lv2Control> controls;
    for (const HostParameter& described : parameters_) {
        controls.emplace_back(*plugin_.model().parameterAt(described.index), described);
    }
    return controls;
}

// While no block runs

void Lv2Plugin::connectPort(std::uint32_t index, void* data) {
    if (index >= ports_.size()) return;
    const Lv2Port& port = ports_[index];
    switch (port.kind) {
        case Lv2PortKind::Parameter:
            values_.connect(port.item, static_cast<const float*>(data));
            break;
        case Lv2PortKind::Latency:
            latency_ = static_cast<float*>(data);
            break;
        // A bounce is what plays: there is nothing to do otherwise.
        case Lv2PortKind::FreeWheeling:
            break;
        case Lv2PortKind::Events:
            events_ = static_cast<const LV2_Atom_Sequence*>(data);
            break;
        case Lv2PortKind::Notify:
            notifications_ = static_cast<LV2_Atom_Sequence*>(data);
            break;
        case Lv2PortKind::Input:
            buffers_.inputs[port.item] = static_cast<const float*>(data);
            break;
        case Lv2PortKind::SideChain:
            buffers_.sideChain[port.item] = static_cast<const float*>(data);
            break;
        case Lv2PortKind::Output:
            buffers_.outputs[port.item] = static_cast<float*>(data);
            break;
    }
}

void Lv2Plugin::activate() {
    plugin_.activate(sampleRate_, largestBlock_);
    isStarting_ = true;
}

// States

LV2_State_Status Lv2Plugin::save(LV2_State_Store_Function store, LV2_State_Handle handle) {
    return saveLv2State(plugin_, values_, uris_, store, handle);
}

LV2_State_Status Lv2Plugin::restore(LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle) {
    const auto status = restoreLv2State(plugin_, values_, uris_, retrieve, handle);
    // A port that was asked for what the state has overtaken would come back as the host's own wish.
    if (status == LV2_STATE_SUCCESS && edits_) edits_->forgetValues();
    return status;
}

// The thread that pumps

void Lv2Plugin::parameterEdited(int index, Edit edit, float value) {
    if (edit != Edit::Value) return;
    stateChanged_.store(true);
    if (edits_) edits_->add(index, edit, value);
}

// Audio

void Lv2Plugin::run(std::uint32_t samples) {
    const RealtimeScope realtime;
    askForPortChanges();
    takePortValues();
    if (isStarting_) start(samples);
    process(static_cast<int>(std::min<std::uint32_t>(samples, std::numeric_limits<int>::max())));
    if (latency_) *latency_ = static_cast<float>(plugin_.processor().latency());
    notify();
}

void Lv2Plugin::silence(std::uint32_t samples) {
    for (float* output : buffers_.outputs) {
        if (output) std::fill_n(output, samples, 0.0f);
    }
}

void Lv2Plugin::askForPortChanges() {
    if (!edits_) return;
    edits_->take([this](int index, Edit edit, float value) {
        if (edit != Edit::Value) return true;
        // A host may decline; the parameter has its value all the same.
        portRequests_->request_change(portRequests_->handle, static_cast<std::uint32_t>(index),
                                      values_.control(static_cast<std::size_t>(index)).shown(value));
        return true;
    });
}

void Lv2Plugin::takePortValues() {
    changes_.clear();
    const auto valueOf = [this](std::size_t i) {
        return plugin_.processor().parameterAt(static_cast<int>(i))->value();
    };
    values_.take(valueOf, [this](std::size_t i, float own) {
        HostEvent& change = changes_.emplace_back();
        change.index = static_cast<int>(i);
        change.value = static_cast<double>(own);
    });
}

/// What the ports say before the first sample is where the instance starts from, not a movement to be heard.
void Lv2Plugin::start(std::uint32_t samples) {
    isStarting_ = samples == 0;
    if (changes_.empty()) return;
    Lv2Events values(changes_, nullptr, uris_);
    plugin_.process({}, values);
    plugin_.reset();
    changes_.clear();
}

std::span<const float* const> Lv2Plugin::sideChain() const {
    const auto count = static_cast<std::size_t>(plugin_.channelCount());
    const std::span channels(buffers_.sideChain.data(), count);
    const auto connected = std::ranges::count_if(channels, [](const float* each) { return each != nullptr; });
    if (connected == 0) return {};
    // The only one is the key for all.
    if (connected == 1 && channels[keyChannel_]) return channels.subspan(keyChannel_, 1);
    return channels;
}

void Lv2Plugin::process(int samples) {
    const auto count = static_cast<std::size_t>(plugin_.channelCount());
    const HostBlock block{.inputs = std::span(buffers_.inputs.data(), count),
                          .sideChain = sideChain(),
                          .outputs = std::span(buffers_.outputs.data(), count),
                          .samples = samples,
                          .transport = transport_.read(events_, uris_, sampleRate_)};
    Lv2Events events(changes_, events_, uris_);
    plugin_.process(block, events);
    transport_.advance(samples, sampleRate_);
}

/// Tells the host that its session is out of date. Its size, when it comes, is the room for it.
void Lv2Plugin::notify() {
    if (!notifications_) return;
    struct Changed {
        LV2_Atom_Event event;
        LV2_Atom_Object_Body object;
    };
    static_assert(sizeof(Changed) % 8 == 0);
    LV2_Atom_Sequence& sequence = *notifications_;
    const std::size_t room = sequence.atom.size;
    sequence.atom = {sizeof(LV2_Atom_Sequence_Body), uris_.atomSequence};
    sequence.body = {};
    if (room < sizeof(LV2_Atom_Sequence_Body) + sizeof(Changed) || !stateChanged_.exchange(false)) return;
    auto& changed = *reinterpret_cast<Changed*>(&sequence + 1);
    changed = {};
    changed.event.body = {sizeof(LV2_Atom_Object_Body), uris_.atomObject};
    changed.object = {0, uris_.stateChanged};
    sequence.atom.size += sizeof(Changed);
}

}  // namespace vanta
