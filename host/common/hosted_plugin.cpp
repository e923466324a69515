#include "host/common/hosted_plugin.hpp"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <utility>

#include "foundation/numbers.hpp"
#include "host/common/model_viewer.hpp"
#include "host/unified/host_position.hpp"
#include "plugin/model/session_state.hpp"

namespace vanta {

/// Keeps what the host knows, so that it only hears of what is new.
class HostedPlugin::Instance final : public UnifiedPluginAdapter {
public:
    Instance(HostedPlugin& owner, ChannelLayout layout)
        : UnifiedPluginAdapter(RoundTrip::ByUs), owner_(owner) {
        create(layout);
        known_ = std::vector<std::atomic<double>>(static_cast<std::size_t>(model().parameterCount()));
        setAllKnown();
    }

    bool has(int index) const { return index >= 0 && index < static_cast<int>(known_.size()); }
    void setKnown(int index, double position) { known_[static_cast<std::size_t>(index)].store(position); }
    void setAllKnown() {
        for (int i = 0; i < static_cast<int>(known_.size()); ++i) {
            const AbstractPluginParameter& parameter = *model().parameterAt(i);
            setKnown(i, hostPosition(parameter, parameter.value()));
        }
        isNewName();
    }

    bool restore(std::span<const std::byte> bytes) {
        // Who restores reads everything anew: nothing of it is an edit.
        restores_.fetch_add(1);
        const bool restored = restoreState(bytes);
        if (restored) setAllKnown();
        restores_.fetch_sub(1);
        if (restored) restored_.store(true);
        return restored;
    }
    bool restoreSurroundings(std::span<const std::byte> bytes) {
        restores_.fetch_add(1);
        const bool restored = readSessionSurroundings(model(), bytes);
        if (restored) isNewName();
        restores_.fetch_sub(1);
        return restored;
    }
    void setLevelFeed(LevelFeed& feed) { feed_ = &feed; }
    bool takeRestored() { return restored_.exchange(false); }
    int pump() {
        if (takeRestored()) owner_.host_.stateRestored();
        return UnifiedPluginAdapter::claimAndPump();
    }
    int claimAndPump() override {
        const int done = pump();
        if (owner_.pumpedByThread_) owner_.host_.pumpedByThread();
        return done;
    }

    void midiLearnHappened(int controller) override {
        UnifiedPluginAdapter::midiLearnHappened(controller);
        if (controller >= 0) owner_.host_.controllerMoved(controller);
    }
    void reportLatency() override { owner_.host_.latencyChanged(); }
    void presetNameChanged() override {
        if (restores_.load() == 0 && isNewName()) owner_.host_.stateChanged();
    }
    void reportParameter(int index, float value) override {
        const double position = hostPosition(*model().parameterAt(index), value);
        std::atomic<double>& known = known_[static_cast<std::size_t>(index)];
        if (std::abs(known.exchange(position) - position) <= static_cast<double>(kEqualWithin)) return;
        if (restores_.load() == 0) owner_.host_.parameterEdited(index, HostCallbacks::Edit::Value, value);
    }
    void parameterUpdated(int index) override {
        const bool all = index == GenericPlugin::kAllParameters;
        if (all) owner_.host_.beginEdits();
        UnifiedPluginAdapter::parameterUpdated(index);
        if (all) owner_.host_.endEdits();
    }

protected:
    void transferLevels() override {
        feed_ ? feed_->exchange(model().levels()) : UnifiedPluginAdapter::transferLevels();
    }

private:
    /// Whether the preset has another name than the host knows; from here on it is known.
    bool isNewName() {
        std::string name = model().presetState().name();
        const std::lock_guard held(nameMutex_);
        std::swap(knownName_, name);
        return knownName_ != name;
    }

    HostedPlugin& owner_;
    std::vector<std::atomic<double>> known_;  ///< positions
    std::mutex nameMutex_;
    std::string knownName_;
    std::atomic<int> restores_{0};  ///< under way
    std::atomic<bool> restored_{false};
    LevelFeed* feed_ = nullptr;
};

HostedPlugin::HostedPlugin(HostCallbacks& host, ChannelLayout layout)
    : host_(host), scratch_(static_cast<std::size_t>(kScratchSamples)) {
    build(layout);
}

HostedPlugin::~HostedPlugin() {
    tellViewers(&ModelViewer::modelGoes);
    tellViewers(&ModelViewer::pluginGoes);
}

void HostedPlugin::build(ChannelLayout layout) {
    auto built = std::make_unique<Instance>(*this, layout);
    thread_.reset();
    instance_ = std::move(built);
    if (pumpedByThread_) thread_.emplace(*instance_);
}

GenericPlugin& HostedPlugin::model() const {
    return instance_->model();
}

GenericPluginProcessor& HostedPlugin::processor() const {
    return instance_->processor();
}

// Set-up

void HostedPlugin::setLayout(ChannelLayout wanted) {
    if (checkedLayout(wanted) == layout()) return;
    tellViewers(&ModelViewer::modelGoes);
    try {
        rebuild(wanted);
    } catch (...) {
        tellViewers(&ModelViewer::modelCame);
        throw;
    }
    tellViewers(&ModelViewer::modelCame);
}

void HostedPlugin::rebuild(ChannelLayout wanted) {
    const std::vector<std::byte> state = saveState();
    const auto rate = model().sampleRate();
    build(wanted);
    instance_->prepare(rate);
    instance_->restore(state);
    // The host has said nothing and has nothing to read anew.
    instance_->takeRestored();
}

bool HostedPlugin::activate(double sampleRate, int largestBlock) {
    if (!(sampleRate >= kLowestRate && sampleRate <= kHighestRate)) return false;
    instance_->prepare(static_cast<float>(sampleRate), std::max(largestBlock, 0));
    instance_->deliverBeforeRender();
    processor().reset();
    return true;
}

// Interfaces

void HostedPlugin::tellViewers(void (ModelViewer::*what)()) {
    const std::vector<ModelViewer*> viewers = viewers_;
    for (ModelViewer* viewer : viewers) (viewer->*what)();
}

void HostedPlugin::tellGesture(int index, HostCallbacks::Edit edit) {
    if (instance_->has(index)) host_.parameterEdited(index, edit, model().parameterAt(index)->value());
}

// The main thread

void HostedPlugin::pump() {
    pumpRequested_.store(false);
    instance_->pump();
}

void HostedPlugin::pumpByThread() {
    if (pumpedByThread_.exchange(true)) return;
    thread_.emplace(*instance_);
}

void HostedPlugin::requestPump() {
    if (pumpedByThread_ || !instance_->hasWork()) return;
    if (!pumpRequested_.exchange(true)) host_.pumpRequested();
}

// Any thread of the host

void HostedPlugin::hostPositionChanged(int index, double position) {
    if (!instance_->has(index) || std::isnan(position)) return;
    instance_->setKnown(index, position);
    instance_->hostPositionChanged(index, position);
    requestPump();
}

void HostedPlugin::hostPositionShown(int index, double position) {
    if (!instance_->has(index) || std::isnan(position)) return;
    instance_->setKnown(index, position);
    instance_->hostPositionShown(index, position);
}

void HostedPlugin::hostValueChanged(int index, double value) {
    if (!instance_->has(index)) return;
    const AbstractPluginParameter& parameter = *model().parameterAt(index);
    hostPositionChanged(index, hostPosition(parameter, fromHostValue(parameter, value)));
}

void HostedPlugin::hostValueStands(int index, double value) {
    instance_->forgetTold(index);
    hostValueChanged(index, value);
}

std::vector<std::byte> HostedPlugin::saveState() {
    return instance_->saveState();
}

bool HostedPlugin::restoreState(std::span<const std::byte> bytes) {
    if (!instance_->restore(bytes)) return false;
    requestPump();
    return true;
}

bool HostedPlugin::restoreSurroundings(std::span<const std::byte> bytes) {
    return instance_->restoreSurroundings(bytes);
}

void HostedPlugin::exchangeLevels(std::span<const std::uint8_t> commands, BinaryDataWriter& writer) {
    instance_->exchangeLevels(commands, writer);
}

void HostedPlugin::setLevelFeed(LevelFeed& feed) {
    instance_->setLevelFeed(feed);
}

double HostedPlugin::position(int index) const {
    const AbstractPluginParameter& parameter = *model().parameterAt(index);
    return hostPosition(parameter, parameter.value());
}

std::string HostedPlugin::text(int index, double value) const {
    const AbstractPluginParameter& parameter = *model().parameterAt(index);
    const float own = fromHostValue(parameter, std::isnan(value) ? 0.0 : value);
    return parameter.text(std::clamp(own, parameter.minimum(), parameter.maximum()));
}

std::optional<double> HostedPlugin::parse(int index, const std::string& text) const {
    float value = 0.0f;
    if (!model().parameterAt(index)->parseText(text, &value)) return {};
    return static_cast<double>(value);
}

// Audio

void HostedPlugin::take(const HostEvent& event, int position) {
    if (event.kind == HostEvent::Kind::Transport) {
        transport_ = event.transport;
        transportBegin_ = position;
    } else if (event.kind == HostEvent::Kind::Midi) {
        instance_->queueMidi(0, event.midi);
    } else if (instance_->has(event.index) && !std::isnan(event.value)) {
        const AbstractPluginParameter& parameter = *model().parameterAt(event.index);
        instance_->setKnown(event.index, hostPosition(parameter, fromHostValue(parameter, event.value)));
        instance_->hostValueChangedInBlock(event.index, event.value);
    }
}

void HostedPlugin::point(const HostBlock& block, int begin) {
    const auto channels = static_cast<std::size_t>(channelCount());
    const auto at = [&](auto buffers, std::size_t i) {
        return i < buffers.size() && buffers[i] ? buffers[i] + begin : nullptr;
    };
    usesScratch_ = false;
    for (std::size_t i = 0; i < channels; ++i) {
        inputs_[i] = at(block.inputs, i);
        outputs_[i] = at(block.outputs, i);
        if (outputs_[i]) continue;
        outputs_[i] = scratch_.data();
        usesScratch_ = true;
    }
    const std::size_t sides = std::min(block.sideChain.size(), channels);
    for (std::size_t i = 0; i < sides; ++i) inputs_[channels + i] = at(block.sideChain, i);
    inputCount_ = static_cast<int>(channels + sides);
    processor().setSideChainInUse(sides > 0);
}

void HostedPlugin::run(const HostBlock& block, int begin, int end) {
    const double beatsPerSample = transport_.isRolling ? transport_.tempo / 60.0 / sampleRate() : 0.0;
    do {
        point(block, begin);
        const int length = usesScratch_ ? std::min(end - begin, kScratchSamples) : end - begin;
        const double beats = transport_.beats + (begin - transportBegin_) * beatsPerSample;
        processor().updateTransport(static_cast<float>(transport_.tempo), static_cast<float>(beats));
        processor().processBlock(inputs_.data(), inputCount_, outputs_.data(), channelCount(), length);
        begin += length;
    } while (begin < end);
}

void HostedPlugin::process(const HostBlock& block, HostEventSource& events) {
    HostEvent event;
    bool pending = events.next(event);
    int position = 0;
    transport_ = block.transport;
    transportBegin_ = 0;
    do {
        while (pending && (event.offset <= position || position >= block.samples)) {
            take(event, position);
            pending = events.next(event);
        }
        const int end = pending ? std::min(event.offset, block.samples) : block.samples;
        run(block, position, end);
        position = end;
    } while (position < block.samples);
    // What the host has placed at the end belongs to the next block's start.
    for (; pending; pending = events.next(event)) take(event, position);
    requestPump();
}

void HostedPlugin::flush(HostEventSource& events) {
    HostEvent event;
    while (events.next(event)) take(event, 0);
    requestPump();
}

void HostedPlugin::reset() {
    processor().reset();
}

}  // namespace vanta
