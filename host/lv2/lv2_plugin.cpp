#include "host/lv2/lv2_plugin.hpp"

#include <algorithm>
#include <cstring>
#include <limits>

#include "foundation/realtime.hpp"
#include "host/lv2/lv2_parts.hpp"
#include "host/lv2/lv2_state.hpp"
#include "plugin/model/generic_plugin.hpp"

namespace vanta {

Lv2Plugin::Lv2Plugin(const Lv2Layout& layout, double sampleRate, const Lv2Features& features)
    : uris_(*features.map),
      portRequests_(features.portRequests),
      largestBlock_(features.largestBlock(uris_)),
      sampleRate_(sampleRate),
      keyChannel_(static_cast<std::size_t>(lv2Channels(layout.layout).front().channel)),
      instance_(std::make_shared<Lv2Instance>(layout, features.portRequests != nullptr)),
      plugin_(instance_->plugin()),
      values_(instance_->values()),
      ports_(lv2Ports(layout.layout, instance_->parameters())) {
    changes_.reserve(ports_.size());
    Lv2Instances::add(this, instance_);
    instance_->start();
}

Lv2Plugin::~Lv2Plugin() {
    Lv2Instances::remove(this);
    instance_->end();
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
    if (status == LV2_STATE_SUCCESS) instance_->forgetEdits();
    return status;
}

// Audio

void Lv2Plugin::run(std::uint32_t samples) {
    const RealtimeScope realtime;
    askForPortChanges();
    hearInterface();
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
    instance_->takeRequests([this](int index, float value) {
        // A host may decline; the parameter has its value all the same.
        portRequests_->request_change(portRequests_->handle, static_cast<std::uint32_t>(index),
                                      values_.control(static_cast<std::size_t>(index)).shown(value));
    });
}

void Lv2Plugin::hearInterface() {
    Lv2SequenceReader events(events_, uris_);
    while (const LV2_Atom_Event* event = events.next()) {
        const std::size_t size = sizeof(LV2_Atom) + event->body.size;
        const auto part = lv2PartOf(&event->body, size, uris_.ownToPlugin, uris_);
        if (!part.empty()) instance_->link().hear(part);
    }
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

/// Appends an event with so many bytes to the notifications, at the start of the block. Null if there is no
/// room.
std::byte* Lv2Plugin::addEvent(std::size_t bytes, std::size_t room) {
    LV2_Atom_Sequence& sequence = *notifications_;
    const std::size_t padded = (sizeof(std::int64_t) + bytes + 7) & ~std::size_t{7};
    if (sequence.atom.size + padded > room) return nullptr;
    auto* event = reinterpret_cast<std::byte*>(&sequence) + sizeof(LV2_Atom) + sequence.atom.size;
    std::fill_n(event, padded, std::byte{});
    sequence.atom.size += static_cast<std::uint32_t>(padded);
    return event + sizeof(std::int64_t);
}

/// Tells the host that its session is out of date, and the interface what waits for it: what does not fit
/// comes with the next block. The port's size, when it comes, is the room for it.
void Lv2Plugin::notify() {
    if (!notifications_) return;
    const std::size_t room = notifications_->atom.size;
    notifications_->atom = {sizeof(LV2_Atom_Sequence_Body), uris_.atomSequence};
    notifications_->body = {};
    struct Changed {
        LV2_Atom atom;
        LV2_Atom_Object_Body object;
    };
    if (stateMayHaveChanged_ |= instance_->takeStateChange()) {
        const Changed changed{{sizeof(LV2_Atom_Object_Body), uris_.atomObject}, {0, uris_.stateChanged}};
        if (std::byte* event = addEvent(sizeof changed, room)) {
            std::memcpy(event, &changed, sizeof changed);
            stateMayHaveChanged_ = false;
        }
    }
    Lv2PluginLink& link = instance_->link();
    while (const std::size_t size = link.nextSize()) {
        std::byte* event = addEvent(sizeof(Lv2PartAtom) + size, room);
        if (!event) break;
        const Lv2PartAtom head = lv2PartAtom(size, uris_.ownToInterface, uris_);
        std::memcpy(event, &head, sizeof head);
        link.takeNext({event + sizeof head, size});
    }
}

}  // namespace vanta
